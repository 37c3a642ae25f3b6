#pragma once

#include <string>
#include <vector>

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// The motions of a file, one for each of its own: the tracks of coordinates that it has and whose
/// steps set something.
std::vector<Motion> readMotions(const mqf2vxb::VxbFile& file, std::vector<std::string>& warnings);

}  // namespace vxbtool::scene
