#pragma once

#include <cstdint>

#include "base/table.h"
#include "format/primitive_type.h"
#include "model/coordinate_lists.h"

namespace mqf2vxb {

/// The packets of one code in one body: one packet group of the output. The groups of a model are
/// counted from 0 in the order of the bodies and, in a body, of its entries.
struct PrimitiveTypeEntry {
    std::uint32_t primIndex = 0;  ///< number of the group; the shared body starts at 0 again
    PrimitiveTypeCode type = 0;
    std::uint32_t polyNum = 0;  ///< polygons, or meshes in a run with a BND file
};

/// The primitives of one coordinate list, by code in the order of first appearance.
struct PrimitiveBody {
    CoordinateListId cno = CoordinateListId::empty;  ///< `shared` in the shared body
    Table<PrimitiveTypeEntry> maltype{"Primitive Body's Type Data Base"};
};

/// What is drawn under one coordinate.
struct CoordinatePrimitiveHeader {
    std::int32_t coord = 0;
    std::uint32_t sharedVertexNum = 0;
    std::uint32_t sharedNormalNum = 0;
    /// The bodies that are drawn under `coord`, as indices of `malprim`. Their entries, body after
    /// body, are the types of this header.
    Table<std::uint32_t> bodies{"primh->maltype", "check2"};
    std::uint32_t typeNum = 0;  ///< entries of all these bodies
};

/// Everything that organisation makes of the polygons.
struct Primitives {
    /// The Primitive Body Data Base: the independent bodies, then the shared one if there is one.
    Table<PrimitiveBody> malprim{"Primitive Body Data Base"};
    Table<CoordinatePrimitiveHeader> malprimh{"malprimh", "check2"};
    /// The shared body's entries; empty without shared polygons.
    Table<PrimitiveTypeEntry> malsprimh{"malsprimh.maltype", "check2"};
    std::uint32_t SharedPolygonNum = 0;  ///< material entries whose polygon is shared
    std::uint32_t SharedVertexTotal = 0;
    std::uint32_t SharedNormalTotal = 0;

    /// Without headers or bodies no primitive headers, packets, vertices or normals are written.
    [[nodiscard]] bool written() const { return !malprimh.empty() && !malprim.empty(); }
    [[nodiscard]] bool hasShared() const { return SharedPolygonNum > 0; }
};

}  // namespace mqf2vxb
