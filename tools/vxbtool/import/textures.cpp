#include "vxbtool/import/textures.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/picture_source.h"
#include "vxbtool/import/source.h"
#include "vxbtool/import/texture_coordinates.h"

namespace vxbtool::importing {
namespace {

using pictures::Picture;

/// How the polygons use each material.
struct Uses {
    std::vector<char> textured;
    std::vector<char> coloured;
    std::vector<char> repeating;
};

Uses findUses(const Materials& materials, const Shape& shape) {
    const std::size_t count = materials.materials.size();
    Uses uses{std::vector<char>(count), std::vector<char>(count), std::vector<char>(count)};
    for (const ShapePolygon& polygon : shape.polygons) {
        const Part& part = shape.parts[polygon.part];
        if (part.textured) {
            uses.textured[part.material] = 1;
            if (part.coloured) {
                uses.coloured[part.material] = 1;
            }
            if (repeats(polygon)) {
                uses.repeating[part.material] = 1;
            }
        }
    }
    return uses;
}

/// The pictures of materials whose texture polygons show.
struct FoundPictures {
    std::vector<std::string> ofMaterial;  ///< as PictureSource has them; empty where there is none
    std::set<std::string> repeated;       ///< those that some polygon repeats
};

FoundPictures findPictures(const Materials& materials, const Uses& uses, PictureSource& source,
                           std::vector<MissingTexture>& missing) {
    FoundPictures result;
    result.ofMaterial.resize(materials.materials.size());
    std::map<std::string, std::string> known;  // by name
    for (std::size_t m = 0; m < materials.materials.size(); ++m) {
        if (uses.textured[m] == 0) {
            continue;
        }
        const std::string& name = materials.materials[m].texture->name;
        const auto [found, isNew] = known.try_emplace(name);
        if (isNew) {
            try {
                found->second = source.find(name);
            } catch (const pictures::PictureFault& fault) {
                missing.push_back({name, fault.what()});
            }
        }
        result.ofMaterial[m] = found->second;
        if (uses.repeating[m] != 0) {
            result.repeated.insert(found->second);
        }
    }
    return result;
}

/// The picture with its mirror image behind it, in either direction.
Picture withMirror(const Picture& picture, bool across, bool down) {
    Picture result{picture.width * (across ? 2 : 1), picture.height * (down ? 2 : 1), {}};
    result.texels.reserve(std::size_t{result.width} * result.height);
    for (std::uint32_t y = 0; y < result.height; ++y) {
        const std::uint32_t fromY = y < picture.height ? y : result.height - 1 - y;
        for (std::uint32_t x = 0; x < result.width; ++x) {
            const std::uint32_t fromX = x < picture.width ? x : result.width - 1 - x;
            result.texels.push_back(picture.texels[std::size_t{fromY} * picture.width + fromX]);
        }
    }
    return result;
}

/// Alpha as it will be: all or nothing. What is blended shows all that can be seen.
void settleAlpha(Picture& picture, const SurfaceMaterial& material, bool blended) {
    constexpr std::uint8_t opaque = 255;
    constexpr std::uint8_t half = 128;
    constexpr std::uint8_t hardlySeen = 24;
    const std::uint8_t least = !material.cutsOut ? 0 : blended ? hardlySeen : half;
    for (pictures::Rgba& texel : picture.texels) {
        texel[3] = texel[3] >= least ? opaque : 0;
    }
}

std::array<float, 3> meanColour(const Picture& picture) {
    std::array<double, 3> sum{};
    std::size_t count = 0;
    for (const pictures::Rgba& texel : picture.texels) {
        if (texel[3] > 0) {
            ++count;
            for (std::size_t i = 0; i < 3; ++i) {
                sum.at(i) += texel.at(i);
            }
        }
    }
    constexpr double full = 255;
    const double whole = full * static_cast<double>(std::max<std::size_t>(count, 1));
    return {static_cast<float>(sum[0] / whole), static_cast<float>(sum[1] / whole),
            static_cast<float>(sum[2] / whole)};
}

}  // namespace

Textures placeTextures(const aiScene& scene, const std::string& file, const Materials& materials,
                       const Shape& shape, const TextureOptions& options) {
    Textures result;
    result.materials.resize(materials.materials.size());
    const Uses uses = findUses(materials, shape);
    PictureSource source(scene, file);
    const FoundPictures found = findPictures(materials, uses, source, result.missing);
    std::map<std::string, std::optional<Picture>> loaded;
    std::vector<pictures::WantedTexture> wanted;
    std::vector<std::size_t> materialOf;
    for (std::size_t m = 0; m < materials.materials.size(); ++m) {
        const std::string& id = found.ofMaterial[m];
        if (id.empty()) {
            continue;
        }
        const SurfaceMaterial& material = materials.materials[m];
        const auto [at, isNew] = loaded.try_emplace(id);
        if (isNew) {
            try {
                at->second = pictures::shrunk(source.load(id), found.repeated.contains(id)
                                                                   ? pictures::Edges::repeat
                                                                   : pictures::Edges::clamp);
            } catch (const pictures::PictureFault& fault) {
                result.missing.push_back({material.texture->name, fault.what()});
            }
        }
        if (!at->second) {
            continue;
        }
        Textures::OfMaterial& own = result.materials[m];
        own.translucent = material.mayBlend && pictures::isTranslucent(*at->second);
        pictures::WantedTexture texture;
        texture.picture = withMirror(*at->second, material.texture->across == Wrap::mirror,
                                     material.texture->down == Wrap::mirror);
        settleAlpha(texture.picture, material, own.translucent || material.opacity < 1);
        own.tinted = !material.unlit && uses.coloured[m] == 0;
        if (own.tinted && material.colour != std::array{1.F, 1.F, 1.F}) {
            texture.picture = pictures::tinted(std::move(texture.picture), material.colour);
        }
        own.mean = meanColour(texture.picture);
        texture.reduction.colours = options.colours;
        texture.repeats = uses.repeating[m] != 0;
        wanted.push_back(std::move(texture));
        materialOf.push_back(m);
    }
    try {
        result.placing = pictures::place(wanted, options.placing);
    } catch (const pictures::PictureFault& fault) {
        throw ImportFault(fault.what());
    }
    result.names.resize(result.placing.textures.size());
    for (std::size_t w = 0; w < wanted.size(); ++w) {
        const std::size_t placed = result.placing.textureOf[w];
        result.materials[materialOf[w]].placed = placed;
        std::string& name = result.names[placed];
        name = name.empty() ? materials.materials[materialOf[w]].texture->name : name;
    }
    return result;
}

}  // namespace vxbtool::importing
