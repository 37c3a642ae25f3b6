#include "vxbtool/pictures/texture_block.h"

#include <algorithm>
#include <bit>
#include <span>
#include <vector>

namespace vxbtool::pictures {
namespace {

model_text::ImageBlock blockOf(const Place& place, std::uint32_t width, std::uint32_t height,
                               std::span<const std::uint16_t> columns) {
    model_text::ImageBlock block{static_cast<std::uint16_t>(place.x),
                                 static_cast<std::uint16_t>(place.y),
                                 width | height << 16U,
                                 {}};
    for (std::size_t i = 0; i < columns.size(); i += 2) {
        block.words.push_back(columns[i] | std::uint32_t{columns[i + 1]} << 16U);
    }
    return block;
}

}  // namespace

std::uint32_t columnsOf(std::uint32_t width, std::uint32_t depth) {
    const std::uint32_t texelsOfWord = 32 / depth;
    return (width + texelsOfWord - 1) / texelsOfWord * 2;
}

model_text::Texture textureOf(const ReducedPicture& picture, const Place& place,
                              const Place& table) {
    const std::uint32_t columns = columnsOf(picture.width, picture.depth);
    const std::uint32_t texelsOfColumn = 16 / picture.depth;
    std::vector<std::uint16_t> data;
    data.reserve(std::size_t{columns} * picture.height);
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        const std::uint16_t* line = picture.texels.data() + std::size_t{y} * picture.width;
        for (std::uint32_t x = 0; x < columns * texelsOfColumn; x += texelsOfColumn) {
            unsigned column = 0;
            for (std::uint32_t i = 0; i < texelsOfColumn; ++i) {
                column |= unsigned{line[std::min(x + i, picture.width - 1)]} << i * picture.depth;
            }
            data.push_back(static_cast<std::uint16_t>(column));
        }
    }
    model_text::Texture texture;
    texture.mode = static_cast<std::uint32_t>(std::countr_zero(picture.depth)) - 2;
    texture.pixels = blockOf(place, columns, picture.height, data);
    if (!picture.table.empty()) {
        texture.clut =
            blockOf(table, static_cast<std::uint32_t>(picture.table.size()), 1, picture.table);
    }
    return texture;
}

}  // namespace vxbtool::pictures
