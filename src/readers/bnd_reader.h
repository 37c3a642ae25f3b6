#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/mesh.h"

namespace mqf2vxb {

/// Reads the polygon numbers of every mesh. They are not checked here.
void readMeshFile(Inputs& inputs, const std::string& fileName, Table<MeshRecord>& meshes,
                  Table<MeshPolygon>& meshPolygons);

}  // namespace mqf2vxb
