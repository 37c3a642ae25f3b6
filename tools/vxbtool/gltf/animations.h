#pragma once

#include "vxbtool/gltf/buffer.h"
#include "vxbtool/gltf/gltf.h"

namespace vxbtool::gltf {

/// An animation for each motion that moves something. The nodes of the coordinates stand first.
void addAnimations(const scene::Scene& scene, const GltfOptions& options, tinygltf::Model& model,
                   Buffer& buffer);

}  // namespace vxbtool::gltf
