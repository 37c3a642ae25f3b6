#pragma once

#include <cstddef>
#include <optional>

#include "vxbtool/import/materials.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/import/shape.h"

namespace vxbtool::importing {

struct ShapeOptions {
    double smoothAngle = 40;               ///< of meshes without normals, in degrees
    std::optional<std::size_t> triangles;  ///< the most of all
};

/// The polygons of a scene under their coordinates, those of two-sided materials from both sides.
Shape makeShape(const aiScene& scene, const CoordinateMap& map, const PlacedCoordinates& placed,
                const Materials& materials, const ShapeOptions& options, Dropped& dropped);

/// The spot that is farthest from its coordinate's origin along an axis.
struct Farthest {
    double distance = 0;  ///< in units
    std::uint32_t coordinate = 0;
};
Farthest farthest(const Shape& shape);

}  // namespace vxbtool::importing
