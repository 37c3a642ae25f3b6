#include "vxbtool/import/picture_source.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "files/disk_files.h"
#include "vxbtool/import/source.h"
#include "vxbtool/import/unescaped.h"

namespace vxbtool::importing {
namespace {

namespace fs = std::filesystem;
using pictures::Picture;
using pictures::PictureFault;

/// Begins what find() says of embedded pictures; the paths of files begin with a slash.
constexpr char embeddedSign = '*';

Picture embeddedPicture(const aiTexture& texture) {
    if (texture.pcData == nullptr || texture.mWidth == 0) {
        throw PictureFault("the embedded picture is empty");
    }
    if (texture.mHeight == 0) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Assimp keeps a file's bytes so.
        const auto* bytes = reinterpret_cast<const char*>(texture.pcData);
        return pictures::readPicture({bytes, texture.mWidth});
    }
    const std::size_t texels = std::size_t{texture.mWidth} * texture.mHeight;
    if (texels > pictures::largestPicture ||
        std::max(texture.mWidth, texture.mHeight) > pictures::longestSide) {
        throw PictureFault("the embedded picture is too large");
    }
    Picture picture{texture.mWidth, texture.mHeight, {}};
    picture.texels.reserve(texels);
    for (std::size_t i = 0; i < texels; ++i) {
        const aiTexel& texel = texture.pcData[i];
        picture.texels.push_back({texel.r, texel.g, texel.b, texel.a});
    }
    return picture;
}

bool isFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

PictureSource::PictureSource(const aiScene& scene, const std::string& modelFile)
    : scene_(scene), folder_(fs::path(modelFile).parent_path()) {}

std::string PictureSource::find(const std::string& name) {
    // Those of glTF have no other name than their number; Assimp also compares what files are called.
    const bool mayBeEmbedded = !isGltf(scene_) || name.starts_with(embeddedSign);
    const auto [texture, index] = scene_.GetEmbeddedTextureAndIndex(name.c_str());
    if (mayBeEmbedded && texture != nullptr) {
        return embeddedSign + std::to_string(index);
    }
    const std::optional<fs::path> path = findFile(name);
    if (!path) {
        throw PictureFault("there is no such file");
    }
    std::error_code error;
    const fs::path canonical = fs::canonical(*path, error);
    return error ? path->string() : canonical.string();
}

Picture PictureSource::load(const std::string& found) {
    if (const aiTexture* texture = embedded(found)) {
        budget_.require();
        Picture picture = embeddedPicture(*texture);
        budget_.add(picture.texels.size(), texture->mHeight == 0
                                               ? texture->mWidth
                                               : sizeof(aiTexel) * picture.texels.size());
        return picture;
    }
    mqf2vxb::DiskInputFiles files;
    try {
        return pictures::readPictureFile(found, files, budget_);
    } catch (const mqf2vxb::Report& report) {
        throw PictureFault(report.cause());
    }
}

/// A file of the path's folder whose name differs in its case only.
std::optional<fs::path> PictureSource::inAnyCase(const fs::path& path) {
    std::error_code notThere;
    // One folder has many spellings.
    const fs::path folder =
        fs::canonical(path.parent_path().empty() ? fs::path(".") : path.parent_path(), notThere);
    if (notThere) {
        return std::nullopt;
    }
    const auto [listing, isNew] = listings_.try_emplace(folder);
    if (isNew) {
        std::error_code error;
        for (fs::directory_iterator at(folder, error), end; !error && at != end;
             at.increment(error)) {
            if (isFile(at->path())) {
                fs::path& known = listing->second[lowerCase(at->path().filename().string())];
                known = known.empty() ? at->path() : std::min(known, at->path());
            }
        }
    }
    const auto found = listing->second.find(lowerCase(path.filename().string()));
    return found == listing->second.end() ? std::nullopt : std::optional(found->second);
}

std::optional<fs::path> PictureSource::findFile(std::string name) {
    constexpr std::string_view scheme = "file://";
    if (name.starts_with(scheme)) {
        name.erase(0, scheme.size());
    }
    std::ranges::replace(name, '\\', '/');
    std::vector<fs::path> near;  // by the model
    std::vector<fs::path> far;
    for (const fs::path& path : {fs::path(name), fs::path(unescaped(name))}) {
        if (path.is_relative()) {
            near.push_back(folder_ / path);
        } else {
            far.push_back(path);
        }
        near.push_back(folder_ / path.filename());
        near.push_back(folder_ / "textures" / path.filename());
        near.push_back(folder_.parent_path() / "textures" / path.filename());
    }
    for (const auto& candidates : {near, far}) {
        if (const auto found = std::ranges::find_if(candidates, isFile);
            found != candidates.end()) {
            return *found;
        }
    }
    for (const fs::path& path : near) {
        if (auto found = inAnyCase(path)) {
            return found;
        }
    }
    return std::nullopt;
}

const aiTexture* PictureSource::embedded(const std::string& found) const {
    return found.front() == embeddedSign ? scene_.mTextures[std::stoul(found.substr(1))] : nullptr;
}

}  // namespace vxbtool::importing
