#pragma once

#include <cstdint>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool::unpack {

/// Cuts the steps of all motions into those of each: the first step of every motion, and the number
/// of steps at the end. A label reaches the steps of its own motion only, so whatever names a step
/// is in one motion with it; among the places that are left, one behind an END is chosen at which
/// the key frames of the motions follow each other.
std::vector<std::uint32_t> cutSteps(const mqf2vxb::VxbFile& file);

}  // namespace vxbtool::unpack
