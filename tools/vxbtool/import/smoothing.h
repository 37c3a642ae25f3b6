#pragma once

#include <vector>

#include "vxbtool/import/faces.h"

namespace vxbtool::importing {

/// Normals for every corner of the faces, four for each face: that of the face together with those of
/// the faces that meet it in the corner's spot at no more than `degrees`.
std::vector<Vector> smoothNormals(const aiMesh& mesh, const std::vector<Face>& faces,
                                  double degrees);

}  // namespace vxbtool::importing
