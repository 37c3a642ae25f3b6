#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Refuses counts of polygons and images that the words of the file cannot hold.
void checkLimits(const Model& model);

}  // namespace mqf2vxb
