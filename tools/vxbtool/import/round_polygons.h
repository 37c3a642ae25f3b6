#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "vxbtool/import/nodes.h"
#include "vxbtool/import/point_table.h"
#include "vxbtool/import/shape.h"

namespace vxbtool::importing {

/// A polygon whose corners are rounded.
struct RoundPolygon {
    ShapePolygon polygon;
    std::array<WholePoint, 4> points;
    bool shared = false;

    /// Takes what is left of a quadrangle one of whose halves has no area; false when nothing is left.
    bool settle();
};

/// The polygons of a shape in whole units, without those that have no area then; quadrangles as two
/// triangles each when only `triangles` are wanted.
std::vector<RoundPolygon> roundPolygons(const Shape& shape, bool triangles, Dropped& dropped);

/// The normal of a corner in 4096ths; that of the polygon where the corner has none.
WholePoint wholeNormal(const RoundPolygon& polygon, std::size_t corner);

/// The most that rounding moves a corner in the model, in units.
double largestError(const PlacedCoordinates& placed, const Shape& shape,
                    const std::vector<RoundPolygon>& polygons);

}  // namespace vxbtool::importing
