#pragma once

#include <cstddef>
#include <cstdint>

#include "vxbtool/import/looks.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

struct SurfaceCounts {
    std::size_t triangles = 0;
    std::size_t quadrangles = 0;
    std::size_t shared = 0;  ///< of both, those that span joints
    std::size_t vertices = 0;
    std::size_t normals = 0;
    std::size_t meshes = 0;  ///< with strips
    double positionError =
        0;  ///< the most that a corner lies beside where the source has it, in units
};

/// Rounds the corners of a shape, merges equal vertices and normals, and makes the model's geometry,
/// materials, hierarchy and, with `strips`, meshes of it. Polygons that rounding leaves without an area
/// are dropped. Throws ImportFault with the counts when packets could not tell all vertices, normals
/// or polygons.
SurfaceCounts buildSurface(const aiScene& scene, const CoordinateMap& map,
                           const PlacedCoordinates& placed, const Shape& shape, LookMaker& looks,
                           bool strips, Dropped& dropped, model_text::ModelText& model);

}  // namespace vxbtool::importing
