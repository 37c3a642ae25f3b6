#pragma once

#include <cstdint>
#include <vector>

#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// Finds the key-frame groups of the motions again, and gives each of their SEQ steps its type and
/// the number of its key frame. `cuts` are those of the steps, which the motions have already.
void unpackKeyFrames(const mqf2vxb::VxbFile& file, const std::vector<std::uint32_t>& cuts,
                     std::vector<model_text::Motion>& motions);

}  // namespace vxbtool::unpack
