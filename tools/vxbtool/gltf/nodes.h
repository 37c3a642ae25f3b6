#pragma once

#include <vector>

#include "vxbtool/gltf/gltf.h"
#include "vxbtool/gltf/meshes.h"

namespace vxbtool::gltf {

/// The nodes of a scene: node i is coordinate i, then those that hang on them, then the model itself,
/// which holds all of them, and last the shared polygons. Returns by coordinate the node that holds
/// what the coordinate holds: its own, or for a matrix that shears a second one inside it.
std::vector<int> addNodes(const scene::Scene& scene, double unit,
                          const std::vector<BodyMesh>& meshes, tinygltf::Model& model);

}  // namespace vxbtool::gltf
