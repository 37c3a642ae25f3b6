#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "model/coordinate_lists.h"

namespace mqf2vxb {

/// A vertex of the GEO file, in the units of that file.
struct VertexRecord {
    std::int32_t index = 0;        ///< its number in the GEO file
    std::int32_t sharedIndex = 0;  ///< position in the shared block, of a shared vertex
    CoordinateListId cno = CoordinateListId::origin;
    bool shared = false;  ///< a shared polygon uses it
    float x = 0;
    float y = 0;
    float z = 0;
};

/// A normal has the fields of a vertex; x, y and z are its vector.
using NormalRecord = VertexRecord;

/// The polygon types that the format knows. A file may hold any other number too.
namespace polygon_type {
inline constexpr std::int32_t triangle = 0;
inline constexpr std::int32_t quadrangle = 1;
inline constexpr std::int32_t line = 2;
inline constexpr std::int32_t sprite = 3;
}  // namespace polygon_type

/// A polygon of the GEO file. A triangle uses the first three vertices and normals, a line two, a
/// sprite one; a sprite's vertex[1] and vertex[2] are its width and height.
struct PolygonRecord {
    std::int32_t type = 0;
    std::array<std::int32_t, 4> vertex{};
    std::array<std::int32_t, 4> normal{};
};

/// Vertices that belong to no coordinate, because no coordinate carries the group that names them.
struct OrphanVertices {
    std::vector<std::string> groups;
    std::unordered_map<std::int32_t, std::size_t>
        groupOfVertex;  ///< the last that names it, an index into `groups`
};

/// How many vertices a polygon of this type has; 0 for a type that is none of the four.
constexpr std::size_t vertexCount(std::int32_t type) {
    constexpr std::array<std::size_t, 4> counts{3, 4, 2, 1};
    return type >= 0 && type < 4 ? counts[static_cast<std::size_t>(type)] : 0;
}

}  // namespace mqf2vxb
