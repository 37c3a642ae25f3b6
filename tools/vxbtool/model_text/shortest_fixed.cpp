#include "vxbtool/model_text/shortest_fixed.h"

#include <cstdlib>

namespace vxbtool::model_text {

float shortestFixed(std::int16_t fixed) {
    constexpr std::int64_t one = 4096;
    const std::int64_t size = std::abs(std::int64_t{fixed});
    // Truncated toward zero, every value from size / 4096 up to the next one is this word. With four
    // decimals there is always one.
    std::int64_t scale = 1;
    std::int64_t decimal = size / one;
    while (decimal * one < size * scale) {
        scale *= 10;
        decimal = (size * scale + one - 1) / one;
        if (decimal * one >= (size + 1) * scale) {
            decimal = 0;
        }
    }
    const auto value =
        static_cast<float>(static_cast<double>(decimal) / static_cast<double>(scale));
    return fixed < 0 ? -value : value;
}

}  // namespace vxbtool::model_text
