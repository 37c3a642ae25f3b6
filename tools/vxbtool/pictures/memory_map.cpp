#include "vxbtool/pictures/memory_map.h"

#include <algorithm>

namespace vxbtool::pictures {
namespace {

/// Runs combine(step) so that, when each run joins a thing with the one `step` further on, every
/// thing is joined with `count - 1` behind it.
template <class Combine>
void joinRuns(std::uint32_t count, Combine combine) {
    for (std::uint32_t joined = 1; joined < count;) {
        const std::uint32_t step = std::min(joined, count - joined);
        combine(step);
        joined += step;
    }
}

bool isColumnAllowed(std::uint32_t x, const Demand& demand) {
    const std::uint32_t inPage = x % MemoryMap::pageColumns;
    return inPage % demand.stepX == 0 &&
           (demand.reach == 0 || inPage + demand.width <= demand.reach);
}

bool isLineAllowed(std::uint32_t y, const Demand& demand) {
    const std::uint32_t inPage = y % MemoryMap::pageLines;
    return inPage % demand.stepY == 0 &&
           (demand.reach == 0 || inPage + demand.height <= MemoryMap::pageLines);
}

}  // namespace

std::optional<Place> MemoryMap::find(const Demand& demand, const Area& area, bool lastLine) const {
    if (demand.width > area.width || demand.height > area.height) {
        return std::nullopt;
    }
    Line allowed;
    for (std::uint32_t x = area.x; x + demand.width <= area.x + area.width; ++x) {
        allowed[x] = isColumnAllowed(x, demand);
    }
    // A column is taken from here on when one of the lines and columns of the rectangle is that
    // begins there.
    std::vector<Line> taken(lines_.begin() + area.y, lines_.begin() + area.y + area.height);
    joinRuns(demand.height, [&](std::uint32_t step) {
        for (std::size_t y = 0; y + step < taken.size(); ++y) {
            taken[y] |= taken[y + step];
        }
    });
    const std::uint32_t rows = area.height - demand.height + 1;
    for (std::uint32_t i = 0; i < rows; ++i) {
        const std::uint32_t row = lastLine ? rows - 1 - i : i;
        if (!isLineAllowed(area.y + row, demand)) {
            continue;
        }
        Line& line = taken[row];
        joinRuns(demand.width, [&](std::uint32_t step) { line |= line >> step; });
        const Line free = allowed & ~line;
        for (std::uint32_t x = area.x; free.any() && x < area.x + area.width; ++x) {
            if (free[x]) {
                return Place{x, area.y + row};
            }
        }
    }
    return std::nullopt;
}

void MemoryMap::take(const Place& place, std::uint32_t width, std::uint32_t height) {
    Line columns;
    for (std::uint32_t x = place.x; x < place.x + width; ++x) {
        columns.set(x);
    }
    for (std::uint32_t y = place.y; y < place.y + height; ++y) {
        lines_[y] |= columns;
    }
}

}  // namespace vxbtool::pictures
