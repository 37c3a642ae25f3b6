#pragma once

#include <cmath>
#include <cstdint>

namespace mqf2vxb {

/// What truncated() makes of values that no 64-bit integer holds.
std::uint32_t truncatedHuge(double value);

/// The value truncated toward zero and reduced to its low 32 bits (two's complement). What is not
/// a number and the infinities are 0.
inline std::uint32_t truncated(double value) {
    constexpr double int64Limit = 9223372036854775808.0;
    if (std::isless(std::fabs(value), int64Limit)) [[likely]] {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(value));
    }
    return truncatedHuge(value);
}

/// Two values truncated and reduced to 16 bits each, the first in the low half.
inline std::uint32_t truncatedPair(double low, double high) {
    return (truncated(low) & 0xFFFFU) | truncated(high) << 16U;
}

}  // namespace mqf2vxb
