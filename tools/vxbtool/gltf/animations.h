#pragma once

#include <vector>

#include "vxbtool/gltf/buffer.h"
#include "vxbtool/gltf/gltf.h"

namespace vxbtool::gltf {

/// An animation for each motion that moves something. The nodes of the coordinates stand first;
/// `holders` is what addNodes() returned.
void addAnimations(const scene::Scene& scene, const GltfOptions& options,
                   const std::vector<int>& holders, tinygltf::Model& model, Buffer& buffer);

}  // namespace vxbtool::gltf
