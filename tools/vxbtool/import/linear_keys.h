#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace vxbtool::importing {

/// How values go from one key to the next: by a leap, or along a cubic spline.
enum class Interpolation { step, cubic };

/// Keys between which values go evenly.
struct LinearKeys {
    std::vector<float> times;   ///< in seconds
    std::vector<float> values;  ///< as many as each key has, key by key
};

/// Keys that show evenly what other keys show, those of a spline 60 times a second. Cubic keys
/// have three elements of `parts` values each: the tangent before, the value and the tangent behind. A
/// rotation's values become of length 1 again. Throws ImportFault when they would be too many.
LinearKeys linearKeys(Interpolation from, std::span<const float> times,
                      std::span<const float> values, std::size_t parts, bool rotation);

}  // namespace vxbtool::importing
