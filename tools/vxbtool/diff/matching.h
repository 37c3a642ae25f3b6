#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/diff/drawn_polygons.h"

namespace vxbtool::diff {

/// A polygon of each file, by their indices.
struct PolygonPair {
    std::uint32_t before;
    std::uint32_t after;
};

/// Which polygon of one file is which of the other. No polygon is in two of the lists.
struct Matching {
    std::size_t equal = 0;
    std::vector<PolygonPair> redrawn;  ///< in the same place, with another look or other normals
    std::vector<PolygonPair> moved;    ///< of the same look, in another place
    std::vector<std::uint32_t> removed;
    std::vector<std::uint32_t> added;
};

/// Matches polygons by what they are: first those that are equal, then those whose corners lie in
/// the same places, then those of one look that share a corner's place, then those of one look with
/// the same vertex numbers, and at last, where each file has as many of one look, those by their
/// order. Near-linear.
Matching matchPolygons(const DrawnPolygons& before, const DrawnPolygons& after);

}  // namespace vxbtool::diff
