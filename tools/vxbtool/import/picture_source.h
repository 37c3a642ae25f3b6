#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include <assimp/scene.h>

#include "vxbtool/pictures/picture.h"
#include "vxbtool/pictures/texel_budget.h"

namespace vxbtool::importing {

/// The pictures that materials of a scene name: embedded ones, or files beside the model, whose names
/// may be written in another case, with other separators, or with folders of another machine.
class PictureSource {
public:
    PictureSource(const aiScene& scene, const std::string& modelFile);

    /// Which picture a name means: the same for all names of one picture. Throws
    /// pictures::PictureFault when there is none.
    std::string find(const std::string& name);

    /// Reads a picture that was found. Throws pictures::PictureFault when that cannot be done, also
    /// when all pictures together grow far beyond the bytes they are read from.
    pictures::Picture load(const std::string& found);
    /// Whether another texture may be made of a picture that was loaded, within the same bounds.
    bool takesVariant(const pictures::Picture& picture) {
        return budget_.takesVariant(picture.texels.size());
    }

private:
    std::optional<std::filesystem::path> findFile(std::string name);
    std::optional<std::filesystem::path> inAnyCase(const std::filesystem::path& path);
    [[nodiscard]] const aiTexture* embedded(const std::string& found) const;

    const aiScene& scene_;
    std::filesystem::path folder_;  ///< the model's
    /// Of the folders that were looked through, the files by their names in lower case.
    std::map<std::filesystem::path, std::map<std::string, std::filesystem::path>> listings_;
    pictures::TexelBudget budget_;
};

}  // namespace vxbtool::importing
