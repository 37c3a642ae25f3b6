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

namespace vxbtool::importing {
namespace {

namespace fs = std::filesystem;
using pictures::Picture;
using pictures::PictureFault;

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

/// "%20" and the like as the characters that they stand for.
std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0) {
            result += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

/// A file of the folder whose name differs in its case only.
std::optional<fs::path> inAnyCase(const fs::path& path) {
    std::error_code error;
    std::vector<fs::path> found;
    const std::string wanted = lowerCase(path.filename().string());
    const fs::path folder = path.parent_path().empty() ? fs::path(".") : path.parent_path();
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (lowerCase(at->path().filename().string()) == wanted && isFile(at->path())) {
            found.push_back(at->path());
        }
    }
    return found.empty() ? std::nullopt : std::optional(*std::ranges::min_element(found));
}

std::optional<fs::path> findFile(const std::string& modelFile, std::string name) {
    constexpr std::string_view scheme = "file://";
    if (name.starts_with(scheme)) {
        name.erase(0, scheme.size());
    }
    std::ranges::replace(name, '\\', '/');
    const fs::path folder = fs::path(modelFile).parent_path();
    std::vector<fs::path> candidates;
    for (const fs::path& path : {fs::path(name), fs::path(unescaped(name))}) {
        if (path.is_relative()) {
            candidates.push_back(folder / path);
        }
        candidates.push_back(folder / path.filename());
        candidates.push_back(folder / "textures" / path.filename());
        candidates.push_back(folder.parent_path() / "textures" / path.filename());
        if (path.is_absolute()) {
            candidates.push_back(path);
        }
    }
    for (const fs::path& path : candidates) {
        if (isFile(path)) {
            return path;
        }
    }
    for (const fs::path& path : candidates) {
        if (auto found = inAnyCase(path)) {
            return found;
        }
    }
    return std::nullopt;
}

}  // namespace

Picture loadPicture(const aiScene& scene, const std::string& modelFile, const std::string& name) {
    if (const aiTexture* embedded = scene.GetEmbeddedTexture(name.c_str())) {
        return embeddedPicture(*embedded);
    }
    const std::optional<fs::path> path = findFile(modelFile, name);
    if (!path) {
        throw PictureFault("there is no such file");
    }
    mqf2vxb::DiskInputFiles files;
    try {
        return pictures::readPictureFile(path->string(), files);
    } catch (const mqf2vxb::Report& report) {
        throw PictureFault(report.cause());
    }
}

}  // namespace vxbtool::importing
