#pragma once

#include <array>

#include "vxbtool/scene/placements.h"

namespace vxbtool::gltf {

/// x, y, z and w, of length 1.
using Quaternion = std::array<float, 4>;

/// The quaternion of a rotation.
Quaternion quaternion(const scene::Matrix& m);

/// Any matrix as a rotation, a scale and one more rotation, first to last: what shears is a scale
/// along axes that are turned.
struct TurnedScale {
    scene::Matrix first;
    scene::Vector3 scale;
    scene::Matrix last;
};
TurnedScale turnedScale(const scene::Matrix& matrix);

}  // namespace vxbtool::gltf
