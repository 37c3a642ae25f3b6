#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Moves the vertices and normals of shared polygons into a block at the end of their tables,
/// ordered by the headers' coordinates, and renumbers the polygons: shared ones by the place in
/// the block, the others by the place in the table.
void prepareSharedPrimitives(Model& model);

}  // namespace mqf2vxb
