#pragma once

#include <bitset>
#include <string>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool {

/// Depths that an image is drawn at: bit 0 for 4, 1 for 8 and 2 for 16 bits a pixel.
using DepthSet = std::bitset<3>;

/// For each image the depths that the packets with texels inside it have in their page words: the
/// image itself does not say how its words are to be read.
std::vector<DepthSet> imageDepths(const mqf2vxb::VxbFile& file);

/// Bits of a pixel; 0 when none or several are known.
unsigned onlyDepth(DepthSet depths);

/// "4 bits", "4 or 8 bits", "depth unknown".
std::string depthText(DepthSet depths);

}  // namespace vxbtool
