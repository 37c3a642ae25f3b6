#pragma once

#include "driver/inputs.h"
#include "model/image.h"
#include "model/table.h"

namespace mqf2vxb {

/// Reads the image file of every slot, in slot order.
void readImages(Inputs& inputs, Table<ImageRecord>& images);

}  // namespace mqf2vxb
