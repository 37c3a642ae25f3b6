#pragma once

#include <cstdint>
#include <vector>

#include "model/coordinate_lists.h"
#include "model/primitive_type.h"

namespace mqf2vxb {

/// A run of polygons that is written as one strip, or one polygon by itself.
struct MeshRecord {
    PrimitiveTypeCode type = 0;
    CoordinateListId cno = CoordinateListId::empty;
    std::vector<std::int32_t> poly;        ///< polygon numbers in strip order
    std::vector<std::uint32_t> materials;  ///< the material of each polygon of `poly`
    std::uint32_t group = 0;               ///< packet group that it is written in
};

}  // namespace mqf2vxb
