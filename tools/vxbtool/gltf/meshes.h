#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/gltf/buffer.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::gltf {

/// The mesh of one body.
struct BodyMesh {
    int mesh = -1;
    /// Of shared polygons: the coordinates that its corners move with, ascending, and the accessor of
    /// the matrices that lead from the model at rest into their spaces.
    std::vector<std::uint32_t> joints;
    int inverseBindMatrices = -1;
};

/// A mesh for each body of the scene, in their order, in metres of `unit`. Its primitives are the
/// polygons of one packet group and look; their materials are the looks.
std::vector<BodyMesh> addMeshes(const scene::Scene& scene, double unit, tinygltf::Model& model,
                                Buffer& buffer);

}  // namespace vxbtool::gltf
