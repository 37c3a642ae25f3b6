#include "vxbtool/gltf/materials.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <utility>

#include "vxb/word_meaning.h"
#include "vxbtool/shared/png.h"

namespace vxbtool::gltf {
namespace {

using mqf2vxb::PrimitiveTypeCode;
namespace type_code = mqf2vxb::type_code;
using scene::Blend;
using scene::Look;
using scene::Picture;

constexpr const char* unlitExtension = "KHR_materials_unlit";
constexpr std::array<const char*, 5> blendNames{"opaque", "half", "add", "subtract", "addQuarter"};

/// The flag of the material that polygons of a look had.
std::uint32_t flagOf(const Look& look) {
    constexpr std::uint32_t unlit = 0x01;
    constexpr std::uint32_t second = 0x02;
    constexpr std::uint32_t blended = 0x04;
    constexpr unsigned pageFlags = 3;
    constexpr std::uint32_t doubleImage = 0x80;
    const auto bit = [&](PrimitiveTypeCode code, std::uint32_t bits) {
        return (look.type & code) != 0 ? bits : 0;
    };
    return (look.lit ? 0 : unlit) | bit(type_code::flag02, second) |
           bit(type_code::flag04, blended) | look.pageFlags << pageFlags |
           bit(type_code::doubleImage, doubleImage);
}

class Textures {
public:
    Textures(const scene::Scene& scene, tinygltf::Model& model, Buffer& buffer)
        : scene_(scene), model_(model), buffer_(buffer) {}

    /// The texture of a picture, which repeats beyond its edges or not.
    int find(std::uint32_t picture, bool repeats) {
        const auto [place, isNew] = textures_.try_emplace({picture, repeats}, 0);
        if (isNew) {
            tinygltf::Texture texture;
            texture.source = image(picture);
            texture.sampler = sampler(repeats);
            place->second = static_cast<int>(model_.textures.size());
            model_.textures.push_back(std::move(texture));
        }
        return place->second;
    }

private:
    int image(std::uint32_t number) {
        const auto [place, isNew] = images_.try_emplace(number, 0);
        if (isNew) {
            const Picture& picture = scene_.pictures[number];
            const auto* const first = reinterpret_cast<const std::uint8_t*>(picture.texels.data());
            place->second = buffer_.addPng(
                pngOf(picture.width, picture.height, {first, 4 * picture.texels.size()}));
            model_.images.back().name = "picture " + std::to_string(number);
            tinygltf::Value::Array images;
            constexpr std::size_t most = 64;  // thousands of tiny ones may make a page
            for (std::size_t i = 0; i < std::min(picture.images.size(), most); ++i) {
                images.push_back(extra(picture.images[i]));
            }
            if (!images.empty()) {
                model_.images.back().extras = tinygltf::Value(
                    tinygltf::Value::Object{{"images", tinygltf::Value(std::move(images))}});
            }
        }
        return place->second;
    }

    int sampler(bool repeats) {
        const auto [place, isNew] = samplers_.try_emplace(repeats, 0);
        if (isNew) {
            tinygltf::Sampler sampler;
            sampler.minFilter = TINYGLTF_TEXTURE_FILTER_NEAREST;
            sampler.magFilter = TINYGLTF_TEXTURE_FILTER_NEAREST;
            sampler.wrapS =
                repeats ? TINYGLTF_TEXTURE_WRAP_REPEAT : TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE;
            sampler.wrapT = sampler.wrapS;
            place->second = static_cast<int>(model_.samplers.size());
            model_.samplers.push_back(std::move(sampler));
        }
        return place->second;
    }

    const scene::Scene& scene_;
    tinygltf::Model& model_;
    Buffer& buffer_;
    std::map<std::pair<std::uint32_t, bool>, int> textures_;
    std::map<std::uint32_t, int> images_;
    std::map<bool, int> samplers_;
};

}  // namespace

void addMaterials(const scene::Scene& scene, tinygltf::Model& model, Buffer& buffer) {
    Textures textures(scene, model, buffer);
    bool unlit = false;
    for (std::uint32_t i = 0; i < scene.looks.size(); ++i) {
        const Look& look = scene.looks[i];
        tinygltf::Material material;
        material.name = mqf2vxb::formName(look.type) + ", look " + std::to_string(i);
        material.pbrMetallicRoughness.metallicFactor = 0;
        material.pbrMetallicRoughness.roughnessFactor = 1;
        if (!look.lit) {
            material.extensions[unlitExtension] = tinygltf::Value(tinygltf::Value::Object());
            unlit = true;
        }
        bool cutOut = false;
        if (look.picture) {
            material.pbrMetallicRoughness.baseColorTexture.index =
                textures.find(*look.picture, look.repeats);
            cutOut = scene.pictures[*look.picture].cutOut;
        }
        if (look.blend != Blend::opaque) {
            constexpr double half = 0.5;  // the only way that glTF has
            material.alphaMode = "BLEND";
            material.pbrMetallicRoughness.baseColorFactor = {1, 1, 1, half};
        } else if (cutOut) {
            material.alphaMode = "MASK";
        }
        material.extras = tinygltf::Value(tinygltf::Value::Object{
            {"look", extra(i)},
            {"type", extra(look.type)},
            {"flag", extra(flagOf(look))},
            {"blend",
             tinygltf::Value(std::string(blendNames[static_cast<std::size_t>(look.blend)]))}});
        model.materials.push_back(std::move(material));
    }
    if (unlit) {
        model.extensionsUsed.emplace_back(unlitExtension);
    }
}

}  // namespace vxbtool::gltf
