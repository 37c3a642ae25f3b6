#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Gives every mesh the code and the coordinate list of its first polygon, and its code to all its
/// polygons. Refuses meshes that do not have each polygon with a material in just one mesh, shared
/// and independent polygons in one mesh, and a second material that would be drawn uncounted.
void organiseMeshes(Model& model);

}  // namespace mqf2vxb
