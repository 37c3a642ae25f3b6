#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/coordinate.h"
#include "model/coordinate_lists.h"
#include "model/geometry.h"

namespace mqf2vxb {

/// Reads the hierarchy and, in its direct form, the coordinates of the vertices. Returns the name
/// of the group file; a vertex that no line names lies in coordinate 0.
std::string readCoordinateFile(Inputs& inputs, const std::string& fileName,
                               Table<CoordinateRecord>& coordinates, Table<VertexRecord>& vertices,
                               CoordinateLists& lists);

/// Whether this name given by an FRM file is that of a group file, which is to be read then.
bool isGroupMode(const std::string& groupFileName);

}  // namespace mqf2vxb
