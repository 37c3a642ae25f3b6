#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "vxbtool/import/coordinate_map.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

/// The most that a matrix of a coordinate can hold, on either side of 0: 16 bits in 4096ths.
inline constexpr double matrixLimit = 32767.0 / 4096;

/// The axis of the source that points up; that of a model is y.
enum class UpAxis { y, z };

/// Finds which nodes become coordinates: those that draw, are joints, or move when `withMotions`, and
/// those that carry several of these. A node that carries one alone is folded into it.
CoordinateMap mapCoordinates(const aiScene& scene, bool withMotions, UpAxis up);

/// The coordinates at rest as whole numbers, and what follows of them.
struct PlacedCoordinates {
    std::vector<model_text::Coordinate> coordinates;
    /// For each coordinate what takes a point of its node's space, in units of the source, into the
    /// coordinate's, in units. It makes good what the rounding of matrices and translations shifts,
    /// where the matrices let it.
    std::vector<Matrix4> toCoordinate;
    /// What takes a point of a coordinate, in units, into the model's space, as the rounded numbers do.
    std::vector<Matrix4> toModel;
    /// The same for a point of the node's space, in units of the source, as the source has it.
    std::vector<Matrix4> sourceToModel;
};

/// Throws ImportFault where a translation goes beyond its 32 bits.
PlacedCoordinates placeCoordinates(const CoordinateMap& map, double scale);

}  // namespace vxbtool::importing
