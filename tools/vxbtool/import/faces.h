#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include <assimp/mesh.h>

#include "vxbtool/import/coordinate_map.h"

namespace vxbtool::importing {

/// A piece of a mesh's polygon: three or four of its corners, around its edge as the source has them.
struct Face {
    std::uint8_t cornerNum = 3;
    std::array<std::uint32_t, 4> vertices{};  ///< of the mesh
};

/// Cuts a polygon's corners, all of which are finite, into triangles; a flat quadrangle stays, its
/// first and third corner where a diagonal between the second and fourth lies inside. What has no
/// area gives none. False when the outline is so intricate, or crosses itself so, that the triangles
/// are those of a fan in part.
bool cutPolygon(const aiMesh& mesh, std::span<const unsigned> corners, std::vector<Face>& faces);

/// The direction of a polygon's front, as long as twice its area, when its corners run
/// anticlockwise.
Vector frontOf(std::span<const Vector> ring);

Vector vectorOf(const aiVector3D& vector);

}  // namespace vxbtool::importing
