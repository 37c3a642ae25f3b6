#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/geometry.h"

namespace mqf2vxb {

/// Reads the geometry. Every vertex and normal starts in coordinate 0. Indices are not checked
/// here but where they are followed.
void readGeometry(Inputs& inputs, const std::string& fileName, Table<VertexRecord>& vertices,
                  Table<NormalRecord>& normals, Table<PolygonRecord>& polygons);

}  // namespace mqf2vxb
