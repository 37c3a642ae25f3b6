#pragma once

#include "vxbtool/gltf/buffer.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::gltf {

/// A material for each look of the scene, in their order, with the textures that they have.
void addMaterials(const scene::Scene& scene, tinygltf::Model& model, Buffer& buffer);

/// A number as `extras` hold it.
inline tinygltf::Value extra(std::uint32_t number) {
    return tinygltf::Value(static_cast<int>(number));
}

}  // namespace vxbtool::gltf
