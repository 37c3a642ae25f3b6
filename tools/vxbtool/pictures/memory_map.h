#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "vxbtool/pictures/placing.h"

namespace vxbtool::pictures {

/// A place in image memory, in columns and lines.
struct Place {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};

/// What a rectangle asks of its place.
struct Demand {
    std::uint32_t width = 1;  ///< in columns
    std::uint32_t height = 1;
    /// The place is a multiple of these, counted from the first column and line of its page.
    std::uint32_t stepX = 1;
    std::uint32_t stepY = 1;
    /// It ends within this many columns from the first one of its page, and within the page's lines;
    /// 0 for a rectangle that knows no pages.
    std::uint32_t reach = 0;
};

/// Which columns of image memory are taken.
class MemoryMap {
public:
    static constexpr std::uint32_t side = 1024;  ///< columns of a line, and lines
    static constexpr std::uint32_t pageColumns = 64;
    static constexpr std::uint32_t pageLines = 256;

    /// The free place with the first line, or the last one, that is inside the area, and of those the
    /// leftmost.
    [[nodiscard]] std::optional<Place> find(const Demand& demand, const Area& area,
                                            bool lastLine) const;
    void take(const Place& place, std::uint32_t width, std::uint32_t height);

private:
    using Line = std::bitset<side>;

    std::vector<Line> lines_ = std::vector<Line>(side);
};

}  // namespace vxbtool::pictures
