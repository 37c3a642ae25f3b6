#pragma once

#include <cstddef>
#include <vector>

#include "vxbtool/import/faces.h"

namespace vxbtool::importing {

/// How many triangles faces make.
std::size_t triangleCount(const std::vector<Face>& faces);

/// Fewer triangles that look much the same: `most` at most, all of them from vertices of the mesh.
std::vector<Face> simplified(const aiMesh& mesh, const std::vector<Face>& faces, std::size_t most);

}  // namespace vxbtool::importing
