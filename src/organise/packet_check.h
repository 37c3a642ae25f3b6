#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Refuses polygons whose packets could not hold what they have to: an index above 65535, a
/// colour outside 0 to 255, a texture that is not there, a strip's polygon whose material does not
/// fill the strip's form. Polygons of a code without a form are left to the size rules.
void checkPackets(const Model& model);

}  // namespace mqf2vxb
