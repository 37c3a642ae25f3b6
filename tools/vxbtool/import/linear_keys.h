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
/// rotation's values become of length 1 again. Counts the values in `made`, and throws ImportFault when
/// they are more than `mostKeyValues`.
LinearKeys linearKeys(Interpolation from, std::span<const float> times,
                      std::span<const float> values, std::size_t parts, bool rotation,
                      std::size_t& made);

inline constexpr std::size_t mostKeyValues = std::size_t{1} << 24U;

}  // namespace vxbtool::importing
