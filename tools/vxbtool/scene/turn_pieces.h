#pragma once

#include <cstddef>

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// In how many pieces, one at least, programs that turn by the short way about one axis have to go from
/// one key's angles to the next one's. They go evenly as well when only one of the angles goes, and
/// otherwise nearly when it is not far.
std::size_t turnPieces(const Vector3& from, const Vector3& to);

}  // namespace vxbtool::scene
