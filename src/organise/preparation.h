#pragma once

#include <vector>

#include "base/table.h"
#include "model/motion.h"

namespace mqf2vxb {

/// Numbers the key frames over all motions and completes the control words of the steps that show
/// them. Returns `aptype`, the Animation Packet Type Table. Refuses what does not fit its bits; a
/// type without a size rule is left to that.
std::vector<PrimitiveTypeCode> prepareAnimation(Table<MotionRecord>& motions);

}  // namespace mqf2vxb
