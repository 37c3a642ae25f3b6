#pragma once

#include "base/table.h"
#include "files/inputs.h"
#include "model/motion.h"

namespace mqf2vxb {

/// Reads the motion file of every slot, in slot order.
void readMotions(Inputs& inputs, Table<MotionRecord>& motions);

}  // namespace mqf2vxb
