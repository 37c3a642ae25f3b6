#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/description.h"
#include "model/image.h"
#include "model/motion.h"

namespace mqf2vxb {

/// Reads the model description: the component file names, and the names of the images and the
/// motions in their slots.
void readModelDescription(Inputs& inputs, const std::string& fileName,
                          ModelDescription& description, Table<ImageRecord>& images,
                          Table<MotionRecord>& motions);

}  // namespace mqf2vxb
