#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Groups the polygons of the materials into bodies by coordinate list and code, and makes the
/// headers of the coordinates.
void buildPrimitiveBodies(Model& model);

/// The same with meshes in place of polygons.
void buildMeshPrimitiveBodies(Model& model);

/// Counts for every coordinate the shared vertices and normals that lie in it; a coordinate that
/// draws nothing of its own gets a header here.
void countSharedPerCoordinate(Model& model);

}  // namespace mqf2vxb
