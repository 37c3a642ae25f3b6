#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace vxbtool::lint {

/// Whether a value that is truncated when it is written fits the integer type.
template <class Integer>
bool fits(double value) {
    const double whole = std::trunc(value);
    return whole >= std::numeric_limits<Integer>::min() &&
           whole <= std::numeric_limits<Integer>::max();
}

}  // namespace vxbtool::lint
