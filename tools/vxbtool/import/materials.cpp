#include "vxbtool/import/materials.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>

#include <assimp/GltfMaterial.h>
#include <assimp/commonMetaData.h>
#include <assimp/material.h>

namespace vxbtool::importing {
namespace {

Wrap wrapOf(aiTextureMapMode mode) {
    switch (mode) {
    case aiTextureMapMode_Clamp:
    case aiTextureMapMode_Decal: return Wrap::clamp;
    case aiTextureMapMode_Mirror: return Wrap::mirror;
    default: return Wrap::repeat;
    }
}

/// Assimp scales, turns and moves, and counts v from the bottom; here it is counted from the top.
std::array<float, 6> transformOf(const aiUVTransform& t) {
    const float c = std::cos(t.mRotation);
    const float s = std::sin(t.mRotation);
    const float a = t.mScaling.x * c;
    const float b = -t.mScaling.x * s;
    const float d = t.mScaling.y * s;
    const float e = t.mScaling.y * c;
    return {a, -b, b + t.mTranslation.x, -d, e, 1 - e - t.mTranslation.y};
}

/// glTF scales, turns about the upper left corner, and moves. Assimp turns the other way about the
/// middle and makes up for that in the translation, which is taken back here.
std::array<float, 6> transformOfGltf(const aiUVTransform& t) {
    const float c = std::cos(t.mRotation);
    const float s = -std::sin(t.mRotation);
    const float across = t.mTranslation.x - t.mScaling.x * (1 - c + s) / 2;
    const float down = 1 - t.mScaling.y * (3 - c - s) / 2 - t.mTranslation.y;
    return {c * t.mScaling.x, s * t.mScaling.y, across, -s * t.mScaling.x, c * t.mScaling.y, down};
}

std::optional<TextureUse> textureOf(const aiMaterial& material, bool gltf) {
    for (const aiTextureType type : {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE}) {
        aiString path;
        aiTextureMapping mapping = aiTextureMapping_UV;
        unsigned set = 0;
        std::array<aiTextureMapMode, 3> modes{aiTextureMapMode_Wrap, aiTextureMapMode_Wrap,
                                              aiTextureMapMode_Wrap};
        if (material.GetTexture(type, 0, &path, &mapping, &set, nullptr, nullptr, modes.data()) !=
                aiReturn_SUCCESS ||
            path.length == 0 || mapping != aiTextureMapping_UV) {
            continue;
        }
        TextureUse use;
        use.name = path.C_Str();
        use.set = std::min(set, unsigned{AI_MAX_NUMBER_OF_TEXTURECOORDS - 1});
        use.across = wrapOf(modes[0]);
        use.down = wrapOf(modes[1]);
        aiUVTransform transform;
        if (material.Get(AI_MATKEY_UVTRANSFORM(type, 0), transform) == aiReturn_SUCCESS) {
            use.transform = gltf ? transformOfGltf(transform) : transformOf(transform);
        }
        return use;
    }
    return std::nullopt;
}

bool isFraction(float value) { return value >= 0 && value <= 1; }

/// Light, in what a material has of it. One above 1 is full.
float fraction(float value) { return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 1.0F; }

void readColour(const aiMaterial& source, bool linear, SurfaceMaterial& material) {
    aiColor4D colour(1, 1, 1, 1);
    const bool given = source.Get(AI_MATKEY_BASE_COLOR, colour) == aiReturn_SUCCESS ||
                       source.Get(AI_MATKEY_COLOR_DIFFUSE, colour) == aiReturn_SUCCESS;
    // Files that give a texture and no light on it mean the texture alone.
    if (!given || (material.texture && colour.r == 0 && colour.g == 0 && colour.b == 0)) {
        return;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        const float value = fraction(colour[static_cast<unsigned>(i)]);
        material.colour.at(i) = linear ? screenColour(value) : value;
    }
    if (linear && isFraction(colour.a)) {
        material.opacity = colour.a;
    }
}

void readTransparency(const aiMaterial& source, bool gltf, SurfaceMaterial& material) {
    if (gltf) {
        aiString mode;
        source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode);
        const std::string_view word = mode.C_Str();
        material.mayBlend = word == "BLEND";
        material.cutsOut = material.mayBlend || word == "MASK";
        if (!material.mayBlend) {
            material.opacity = 1;
        }
        return;
    }
    float opacity = 1;
    // Files that say 0 for every material mean the opposite; nobody models what is never seen.
    if (source.Get(AI_MATKEY_OPACITY, opacity) == aiReturn_SUCCESS && isFraction(opacity) &&
        opacity > 0) {
        material.opacity = opacity;
    }
}

SurfaceMaterial readMaterial(const aiMaterial& source, bool gltf, bool unlit) {
    SurfaceMaterial material;
    aiString name;
    source.Get(AI_MATKEY_NAME, name);
    material.name = name.C_Str();
    material.texture = textureOf(source, gltf);
    readColour(source, gltf, material);
    // What Assimp makes for meshes without a material: one for X files, another for most formats.
    const auto isGrey = [&](float grey) { return material.colour == std::array{grey, grey, grey}; };
    material.assumed = !gltf && ((material.name == AI_DEFAULT_MATERIAL_NAME && isGrey(0.6F)) ||
                                 (material.name.empty() && isGrey(0.5F)));
    readTransparency(source, gltf, material);
    int shading = 0;
    material.unlit = unlit || (source.Get(AI_MATKEY_SHADING_MODEL, shading) == aiReturn_SUCCESS &&
                               shading == aiShadingMode_Unlit);
    int twoSided = 0;
    material.twoSided =
        source.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS && twoSided != 0;
    return material;
}

}  // namespace

float screenColour(float light) {
    constexpr float dark = 0.0031308F;
    return light <= dark ? 12.92F * light : 1.055F * std::pow(light, 1 / 2.4F) - 0.055F;
}

Materials readMaterials(const aiScene& scene, bool unlit) {
    Materials result;
    result.linearColours = isGltf(scene);  // which are amounts of light
    for (const aiMaterial* material : std::span(scene.mMaterials, scene.mNumMaterials)) {
        result.materials.push_back(readMaterial(*material, result.linearColours, unlit));
    }
    return result;
}

}  // namespace vxbtool::importing
