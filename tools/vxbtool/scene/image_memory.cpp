#include "vxbtool/scene/image_memory.h"

#include <algorithm>

#include <fmt/core.h>

namespace vxbtool::scene {

ImageMemory::ImageMemory(const mqf2vxb::VxbFile& file, std::vector<std::string>& warnings)
    : values_(file.images.empty() ? 0 : std::size_t{columns} * lines), owners_(values_.size()) {
    std::uint32_t unsized = 0;
    for (std::uint32_t i = 0; i < file.images.size(); ++i) {
        const mqf2vxb::Image& image = file.images[i];
        bool whole = put(file, i, image.pixels, false);
        if (image.clut) {
            whole = put(file, i, *image.clut, true) && whole;
        }
        unsized += whole ? 0 : 1;
    }
    if (unsized > 0) {
        warnings.push_back(
            fmt::format("{} image{} not shown whole: {} words are not as many as {} size says",
                        unsized, unsized == 1 ? " is" : "s are", unsized == 1 ? "its" : "their",
                        unsized == 1 ? "its" : "their"));
    }
}

bool ImageMemory::put(const mqf2vxb::VxbFile& file, std::uint32_t image,
                      const mqf2vxb::ImageBlock& block, bool clut) {
    // What does not say its size may still be a colour table, which is a line.
    if (!block.sized() && (!clut || block.words == 0)) {
        return block.words == 0;
    }
    const std::uint32_t width = block.sized() ? block.width : std::min(2 * block.words, columns);
    const std::uint32_t height = block.sized() ? block.height : 1;
    places_.push_back({image, block.x % columns, block.y % lines, width, height, clut});
    std::uint32_t number = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x, ++number) {
            const std::uint32_t word = file.words[block.offset + number / 2];
            const std::size_t at = place(block.x + x, block.y + y);
            values_[at] = static_cast<std::uint16_t>(number % 2 == 0 ? word : word >> 16U);
            owners_[at] = image + 1;
        }
    }
    return true;
}

std::size_t ImageMemory::differing(const ImageMemory& other) const {
    std::size_t number = 0;
    for (std::size_t i = 0; i < std::min(values_.size(), other.values_.size()); ++i) {
        number += values_[i] != other.values_[i] ? 1 : 0;
    }
    return number;
}

Rgba colourOf(std::uint16_t value) {
    // Five bits become eight, so that the most of five is the most of eight.
    const auto component = [value](unsigned shift) {
        const unsigned five = value >> shift & 0x1FU;
        return static_cast<std::uint8_t>(five << 3U | five >> 2U);
    };
    return {component(0), component(5), component(10),
            static_cast<std::uint8_t>(value == 0 ? 0 : 255)};
}

}  // namespace vxbtool::scene
