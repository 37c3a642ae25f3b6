#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/table.h"
#include "model/coordinate.h"
#include "model/coordinate_lists.h"
#include "model/description.h"
#include "model/geometry.h"
#include "model/image.h"
#include "model/material.h"
#include "model/mesh.h"
#include "model/motion.h"
#include "model/pivot.h"
#include "model/primitives.h"

namespace mqf2vxb {

/// One model with every table that a conversion fills. The readers fill the tables in this order;
/// organisation adds `primitives`; the writers only read.
struct Model {
    ModelDescription description;
    Table<ImageRecord> images{"PXL Data Base"};
    Table<VertexRecord> vertices{"Vertex Data Base"};
    Table<NormalRecord> normals{"Normal Data Base"};
    Table<PolygonRecord> polygons{"Polygon Data Base"};
    MaterialTable materials;
    Table<MeshRecord> meshes{"Mesh Data Base"};
    /// The polygons of all meshes, mesh after mesh. Most meshes have so few that a table for each
    /// would cost more than they do.
    Table<MeshPolygon> meshPolygons{"Mesh's Polygon Index Data Base"};
    Table<PivotRecord> pivots{"Pivot Data Base"};
    Table<CoordinateRecord> coordinates{"Coordinate Data Base"};
    std::string GroupFileName;  ///< as the FRM file gives it
    OrphanVertices orphans;
    Table<MotionRecord> motions{"CLP Data Base"};

    CoordinateLists coordinateLists;
    Primitives primitives;
    ImageTypes malimage;
    std::vector<PrimitiveTypeCode> aptype;  ///< the Animation Packet Type Table
    /// The first type of a SEQ line that has no size rule.
    std::optional<PrimitiveTypeCode> unsizedStepType;

    /// The polygons of a mesh in strip order.
    [[nodiscard]] std::span<const MeshPolygon> polygonsOf(const MeshRecord& mesh) const {
        return meshPolygons.records().subspan(mesh.firstPolygon, mesh.polyNum);
    }
};

}  // namespace mqf2vxb
