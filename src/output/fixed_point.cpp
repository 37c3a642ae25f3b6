#include "output/fixed_point.h"

#include <cmath>

namespace mqf2vxb {

std::uint32_t truncated(double value) {
    constexpr double int64Limit = 9223372036854775808.0;
    constexpr double word = 4294967296.0;
    if (std::isless(std::fabs(value), int64Limit)) {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
    }
    if (!std::isfinite(value)) {
        return 0;
    }
    // A number this large is whole; its remainder is exact and has its sign.
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(std::fmod(value, word)));
}

}  // namespace mqf2vxb
