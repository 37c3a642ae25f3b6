#include "vxbtool/render/sheet.h"

#include <algorithm>

namespace vxbtool::render {

std::vector<PixelArea> sheetOf(std::uint32_t width, std::uint32_t height, std::uint32_t views) {
    std::uint32_t columns = 1;
    std::uint32_t best = 0;
    for (std::uint32_t number = 1; number <= views; ++number) {
        const std::uint32_t rows = (views + number - 1) / number;
        const std::uint32_t fits = std::min(width / number * 3, height / rows * 4);
        if (fits > best) {
            best = fits;
            columns = number;
        }
    }
    std::vector<PixelArea> areas;
    if (best == 0) {
        return areas;
    }
    const std::uint32_t rows = (views + columns - 1) / columns;
    for (std::uint32_t i = 0; i < views; ++i) {
        areas.push_back({i % columns * (width / columns), i / columns * (height / rows),
                         width / columns, height / rows});
    }
    return areas;
}

}  // namespace vxbtool::render
