#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Gives every mesh the code and the coordinate list of its first polygon, and its code to all its
/// polygons. Refuses meshes that do not share out the polygons of the materials among them, one
/// mesh for each.
void organiseMeshes(Model& model);

}  // namespace mqf2vxb
