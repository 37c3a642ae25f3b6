#pragma once

#include <cstdint>

#include "format/primitive_type.h"
#include "model/coordinate_lists.h"

namespace mqf2vxb {

/// A run of polygons that is written as one strip, or one polygon by itself.
struct MeshRecord {
    PrimitiveTypeCode type = 0;
    CoordinateListId cno = CoordinateListId::empty;
    std::uint32_t firstPolygon = 0;  ///< index into Model::meshPolygons
    std::uint32_t polyNum = 0;
    std::uint32_t group = 0;  ///< packet group that it is written in
    bool repeats = false;     ///< it names a polygon more than once
};

/// A polygon of a mesh.
struct MeshPolygon {
    std::int32_t number = 0;     ///< index into the Polygon Data Base
    std::uint32_t material = 0;  ///< index into the Material Data Base
};

}  // namespace mqf2vxb
