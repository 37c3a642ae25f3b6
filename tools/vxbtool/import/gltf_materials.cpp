#include "vxbtool/import/gltf_materials.h"

#include <utility>

namespace vxbtool::importing {

bool renewMaterials(GltfJson& document) {
    bool changed = false;
    constexpr const char* old = "KHR_materials_pbrSpecularGlossiness";
    for (GltfJson& material : document["materials"]) {
        if (!material.contains("extensions") || !material["extensions"].contains(old)) {
            continue;
        }
        const GltfJson& before = material["extensions"][old];
        GltfJson made{{"metallicFactor", 0}};
        if (before.contains("diffuseFactor")) {
            made["baseColorFactor"] = before.at("diffuseFactor");
        }
        if (before.contains("diffuseTexture")) {
            made["baseColorTexture"] = before.at("diffuseTexture");
        }
        material["pbrMetallicRoughness"] = std::move(made);
        material["extensions"].erase(old);
        changed = true;
    }
    return changed;
}

bool chooseTextureCoordinates(GltfJson& document) {
    bool changed = false;
    const GltfJson::json_pointer own("/extensions/KHR_texture_transform/texCoord");
    const GltfJson::json_pointer name("/pbrMetallicRoughness/baseColorTexture");
    for (GltfJson& material : document["materials"]) {
        if (material.contains(name) && material[name].contains(own)) {
            material[name]["texCoord"] = numberOf(material[name][own]);
            changed = true;
        }
    }
    return changed;
}

bool namePictures(GltfJson& document) {
    bool changed = false;
    for (GltfJson& texture : document["textures"]) {
        if (texture.contains("source") || !texture.contains("extensions")) {
            continue;
        }
        for (const GltfJson& extension : texture["extensions"]) {
            if (extension.contains("source")) {
                texture["source"] = numberOf(extension, "source");
                changed = true;
                break;
            }
        }
    }
    return changed;
}

}  // namespace vxbtool::importing
