#pragma once

#include <cstdint>

namespace mqf2vxb {

/// The value truncated toward zero and reduced to its low 32 bits (two's complement). What is not
/// a number and the infinities are 0.
std::uint32_t truncated(double value);

/// Two values truncated and reduced to 16 bits each, the first in the low half.
inline std::uint32_t truncatedPair(double low, double high) {
    return (truncated(low) & 0xFFFFU) | truncated(high) << 16U;
}

}  // namespace mqf2vxb
