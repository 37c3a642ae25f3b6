#pragma once

#include "driver/inputs.h"
#include "model/motion.h"
#include "model/table.h"

namespace mqf2vxb {

/// Reads the motion file of every slot, in slot order.
void readMotions(Inputs& inputs, Table<MotionRecord>& motions);

}  // namespace mqf2vxb
