#pragma once

#include <string>

#include "vxbtool/scene/scene.h"

namespace vxbtool::gltf {

struct GltfOptions {
    double unit = 0.001;  ///< metres
    double fps = 30;      ///< frames of a second
    bool motions = true;  ///< whether motions become animations
};

/// The glTF 2.0 binary file of a scene. Node number i is coordinate i. What glTF has no place for
/// stands in `extras`: of the primitives their look, packet group and texture's place, of the
/// materials the type code and the flag, of the nodes the coordinate's three further values, of the
/// animations the motion's number. Throws std::length_error when the file would be too large.
std::string glb(const scene::Scene& scene, const GltfOptions& options);

}  // namespace vxbtool::gltf
