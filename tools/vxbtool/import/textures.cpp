#include "vxbtool/import/textures.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
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

/// The least alpha of a texel that is drawn, 0 when all are. What is blended shows all that can be
/// seen.
std::uint8_t leastAlpha(const SurfaceMaterial& material, bool blended) {
    constexpr std::uint8_t half = 128;
    constexpr std::uint8_t hardlySeen = 24;
    return !material.cutsOut ? 0 : blended ? hardlySeen : half;
}

/// Alpha as it will be: all or nothing.
void settleAlpha(Picture& picture, std::uint8_t least) {
    constexpr std::uint8_t opaque = 255;
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

/// What a material makes of a picture.
struct Variant {
    bool mirrorAcross = false;
    bool mirrorDown = false;
    std::uint8_t leastAlpha = 0;
    std::array<float, 3> colour{1, 1, 1};
    bool repeats = false;

    bool operator<(const Variant& other) const {
        const auto all = [](const Variant& v) {
            return std::tie(v.mirrorAcross, v.mirrorDown, v.leastAlpha, v.colour, v.repeats);
        };
        return all(*this) < all(other);
    }
};

/// Gathers the textures that the materials want; materials that want the same one share it.
class WantedTextures {
public:
    WantedTextures(PictureSource& source, pictures::Colours colours,
                   std::vector<MissingTexture>& missing)
        : source_(source), colours_(colours), missing_(missing) {}

    /// Adds the texture of a material whose picture was found. `repeated` tells whether any polygon
    /// repeats the picture.
    void add(std::size_t material, const SurfaceMaterial& surface, const std::string& found,
             Variant variant, bool repeated, Textures::OfMaterial& own) {
        const auto [at, isNew] = loaded_.try_emplace(found);
        if (isNew) {
            load(surface.texture->name, found, repeated, at->second);
        }
        Loaded& loaded = at->second;
        if (!loaded.picture) {
            return;
        }
        own.translucent = surface.mayBlend && loaded.translucent;
        variant.mirrorAcross = surface.texture->across == Wrap::mirror;
        variant.mirrorDown = surface.texture->down == Wrap::mirror;
        variant.leastAlpha = leastAlpha(surface, own.translucent || surface.opacity < 1);
        if (!loaded.indexOf.contains(variant) && isColoured(variant) &&
            !source_.takesVariant(*loaded.picture)) {
            if (!std::exchange(loaded.tooManyColours, true)) {
                missing_.push_back(
                    {surface.texture->name, "too many materials colour it: some show it as it is"});
            }
            own.tinted = false;
            variant.colour = {1, 1, 1};
        }
        const auto [known, isWanted] = loaded.indexOf.try_emplace(variant, textures_.size());
        if (isWanted) {
            textures_.push_back(textureOf(*loaded.picture, variant));
            means_.push_back(meanColour(textures_.back().picture));
        }
        own.mean = means_[known->second];
        users_.push_back({material, known->second});
    }

    [[nodiscard]] const std::vector<pictures::WantedTexture>& textures() const { return textures_; }

    struct User {
        std::size_t material;
        std::size_t texture;  ///< among textures()
    };
    [[nodiscard]] const std::vector<User>& users() const { return users_; }

private:
    struct Loaded {
        std::optional<Picture> picture;
        bool translucent = false;
        bool tooManyColours = false;
        std::map<Variant, std::size_t> indexOf;  // among the textures
    };

    static bool isColoured(const Variant& variant) {
        return variant.colour != std::array{1.F, 1.F, 1.F};
    }

    void load(const std::string& name, const std::string& found, bool repeated, Loaded& loaded) {
        try {
            loaded.picture = pictures::shrunk(
                source_.load(found), repeated ? pictures::Edges::repeat : pictures::Edges::clamp);
            loaded.translucent = pictures::isTranslucent(*loaded.picture);
        } catch (const pictures::PictureFault& fault) {
            missing_.push_back({name, fault.what()});
        }
    }

    pictures::WantedTexture textureOf(const Picture& picture, const Variant& variant) const {
        pictures::WantedTexture texture;
        texture.picture = withMirror(picture, variant.mirrorAcross, variant.mirrorDown);
        settleAlpha(texture.picture, variant.leastAlpha);
        if (isColoured(variant)) {
            texture.picture = pictures::tinted(std::move(texture.picture), variant.colour);
        }
        texture.reduction.colours = colours_;
        texture.repeats = variant.repeats;
        return texture;
    }

    PictureSource& source_;
    pictures::Colours colours_;
    std::vector<MissingTexture>& missing_;
    std::map<std::string, Loaded> loaded_;  // as PictureSource has them
    std::vector<pictures::WantedTexture> textures_;
    std::vector<std::array<float, 3>> means_;  // of the textures
    std::vector<User> users_;
};

}  // namespace

Textures placeTextures(const aiScene& scene, const std::string& file, const Materials& materials,
                       const Shape& shape, const TextureOptions& options) {
    Textures result;
    result.materials.resize(materials.materials.size());
    const Uses uses = findUses(materials, shape);
    PictureSource source(scene, file);
    const FoundPictures found = findPictures(materials, uses, source, result.missing);
    WantedTextures wanted(source, options.colours, result.missing);
    for (std::size_t m = 0; m < materials.materials.size(); ++m) {
        const std::string& id = found.ofMaterial[m];
        if (id.empty()) {
            continue;
        }
        const SurfaceMaterial& material = materials.materials[m];
        Textures::OfMaterial& own = result.materials[m];
        own.tinted = !material.unlit && uses.coloured[m] == 0;
        Variant variant;
        variant.repeats = uses.repeating[m] != 0;
        if (own.tinted) {
            variant.colour = material.colour;
        }
        wanted.add(m, material, id, variant, found.repeated.contains(id), own);
    }
    try {
        result.placing = pictures::place(wanted.textures(), options.placing);
    } catch (const pictures::PictureFault& fault) {
        throw ImportFault(fault.what());
    }
    result.names.resize(result.placing.textures.size());
    for (const auto& [material, texture] : wanted.users()) {
        const std::size_t placed = result.placing.textureOf[texture];
        result.materials[material].placed = placed;
        std::string& name = result.names[placed];
        name = name.empty() ? materials.materials[material].texture->name : name;
    }
    return result;
}

}  // namespace vxbtool::importing
