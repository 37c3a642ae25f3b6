#pragma once

#include <array>

#include "vxbtool/import/channel.h"

namespace vxbtool::importing {

/// Angles about x, y and z in 4096ths of a turn; the one about x turns first.
using Angles = std::array<double, 3>;

constexpr double wholeTurn = 4096;

Quaternion rotationOf(const Angles& angles);

/// The angles of a rotation, of all that say the same those that are nearest to `near`, so that values
/// between the two go the short way.
Angles anglesNear(const Quaternion& rotation, const Angles& near);

/// By how much two rotations differ, in radians from 0 to half a turn.
double angleBetween(const Quaternion& a, const Quaternion& b);

/// A matrix taken apart into a scale and a rotation behind it.
struct Turned {
    Quaternion rotation;
    /// Negative where the matrix mirrors: all three then.
    Vector scale;
    /// By how much the matrix's axes lean away from those of the rotation, in radians; 0 unless it
    /// shears.
    double lean = 0;
};

/// Axes of no length count as those of the rotation.
Turned takeApart(const Matrix3& matrix);

}  // namespace vxbtool::importing
