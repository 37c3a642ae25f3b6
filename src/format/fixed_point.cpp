#include "format/fixed_point.h"

#include <cmath>

namespace mqf2vxb {

std::uint32_t truncatedHuge(double value) {
    constexpr double word = 4294967296.0;
    if (!std::isfinite(value)) {
        return 0;
    }
    // A number this large is whole; its remainder is exact and has its sign.
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(std::fmod(value, word)));
}

}  // namespace mqf2vxb
