#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/coordinate.h"
#include "model/coordinate_lists.h"
#include "model/geometry.h"

namespace mqf2vxb {

/// Reads the object groups: each group's vertices get the list of every coordinate that carries
/// the group's name, in place of the list that they had. The vertices of a group whose name no
/// coordinate carries are left without a coordinate and noted in `orphans`.
void readGroupFile(Inputs& inputs, const std::string& fileName,
                   const Table<CoordinateRecord>& coordinates, Table<VertexRecord>& vertices,
                   CoordinateLists& lists, OrphanVertices& orphans);

}  // namespace mqf2vxb
