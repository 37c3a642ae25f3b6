#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vxbtool/import/materials.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/pictures/placing.h"

namespace vxbtool::importing {

struct TextureOptions {
    pictures::PlacingOptions placing;
    pictures::Colours colours = pictures::Colours::automatic;
};

/// A texture that could not be had, and why.
struct MissingTexture {
    std::string name;
    std::string cause;
};

/// The pictures of a model in image memory.
struct Textures {
    /// What became of a material's picture.
    struct OfMaterial {
        std::optional<std::size_t>
            placed;  ///< index into Placing::textures; none: its colour alone
        std::array<float, 3> mean{1, 1, 1};  ///< mean colour of what is drawn of the picture
        bool tinted = false;                 ///< the picture has the material's colour already
        bool translucent = false;            ///< parts of the picture are neither opaque nor holes
    };
    std::vector<OfMaterial> materials;  ///< as many as the scene has
    pictures::Placing placing;
    std::vector<std::string> names;  ///< of each placed texture, for people
    std::vector<MissingTexture> missing;
};

/// Loads the pictures that the shape's polygons use, from the scene or beside `file`, and places
/// them. Throws ImportFault when image memory can never hold them.
Textures placeTextures(const aiScene& scene, const std::string& file, const Materials& materials,
                       const Shape& shape, const TextureOptions& options);

}  // namespace vxbtool::importing
