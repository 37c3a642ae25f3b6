#pragma once

#include <cstdint>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool {

/// Control words that stand together, by their numbers in the file.
struct StepRange {
    std::uint32_t first = 0;
    std::uint32_t end = 0;
};

/// The steps of each motion. The control words of all motions stand together, motion after motion:
/// those from the first that a motion names up to the first that a later one names are taken for its
/// own.
std::vector<StepRange> stepsOfMotions(const mqf2vxb::Animation& animation);

}  // namespace vxbtool
