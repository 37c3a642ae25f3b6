#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vxbtool::importing {

/// The triangles of one strip, in its order.
struct Strip {
    /// One of the triangles: its number, and which of its corners comes first in the strip.
    struct Step {
        std::uint32_t triangle = 0;
        std::uint8_t firstCorner = 0;
    };
    std::vector<Step> steps;
};

/// Puts triangles that may stand in one strip into as few strips as it finds; each triangle is in
/// one.
std::vector<Strip> findStrips(std::span<const std::array<std::uint32_t, 3>> triangles);

}  // namespace vxbtool::importing
