#include "vxbtool/scene/image_pictures.h"

#include <algorithm>
#include <optional>
#include <string>

#include "format/texture_fields.h"
#include "vxbtool/scene/image_memory.h"

namespace vxbtool::scene {
namespace {

using mqf2vxb::ImageBlock;
using mqf2vxb::VxbFile;

constexpr std::uint32_t columnBits = 16;

/// How polygons look at an image.
struct Use {
    std::uint32_t depth = columnBits;
    mqf2vxb::ClutPosition clut{0, 0};
};

std::vector<std::optional<Use>> usesOf(const VxbFile& file, const Scene& scene) {
    std::vector<std::optional<Use>> uses(file.images.size());
    for (const Picture& picture : scene.pictures) {
        for (const std::uint32_t image : picture.images) {
            if (!uses[image]) {
                uses[image] = Use{picture.depth, mqf2vxb::clutPosition(picture.clut.value_or(0))};
            }
        }
    }
    return uses;
}

std::uint16_t columnOf(const VxbFile& file, const ImageBlock& block, std::uint32_t number) {
    const std::uint32_t word = file.words[block.offset + number / 2];
    return static_cast<std::uint16_t>(number % 2 == 0 ? word : word >> 16U);
}

/// An image without a use has the depth of its own colour table, else of a colour in each column.
std::uint32_t likelyDepth(const mqf2vxb::Image& image) {
    if (!image.clut) {
        return columnBits;
    }
    constexpr std::uint32_t fewColours = 16;
    return 2 * image.clut->words > fewColours ? 8 : 4;
}

MemoryPicture pictureOf(const VxbFile& file, const mqf2vxb::Image& image,
                        const std::optional<Use>& use, const ImageMemory& memory) {
    const ImageBlock& block = image.pixels;
    MemoryPicture picture;
    if (!block.sized()) {
        return picture;
    }
    const std::uint32_t depth = use ? use->depth : likelyDepth(image);
    const std::uint32_t perColumn = columnBits / depth;
    const mqf2vxb::ClutPosition table = use ? use->clut : mqf2vxb::ClutPosition{0, 0};
    picture.width = block.width * perColumn;
    picture.height = block.height;
    picture.pixels.reserve(std::size_t{picture.width} * picture.height);
    for (std::uint32_t i = 0; i < block.width * block.height; ++i) {
        const std::uint16_t column = columnOf(file, block, i);
        for (std::uint32_t texel = 0; texel < perColumn; ++texel) {
            if (depth == columnBits) {
                picture.pixels.push_back(colourOf(column));
                continue;
            }
            const std::uint32_t index = column >> (texel * depth) & ((1U << depth) - 1U);
            const bool own = image.clut && index < 2 * image.clut->words;
            picture.pixels.push_back(colourOf(own ? columnOf(file, *image.clut, index)
                                                  : memory.column(table.x + index, table.y)));
        }
    }
    return picture;
}

}  // namespace

std::vector<MemoryPicture> imagePictures(const VxbFile& file, const Scene& scene) {
    std::vector<std::string> told;  // the scene has these warnings already
    const ImageMemory memory(file, told);
    const std::vector<std::optional<Use>> uses = usesOf(file, scene);
    std::vector<MemoryPicture> pictures;
    for (std::size_t i = 0; i < file.images.size(); ++i) {
        pictures.push_back(pictureOf(file, file.images[i], uses[i], memory));
    }
    return pictures;
}

MemoryPicture memoryPicture(const VxbFile& file, const Scene& scene) {
    const std::vector<MemoryPicture> images = imagePictures(file, scene);
    MemoryPicture picture;
    picture.width = ImageMemory::columns * pixelsPerColumn;
    for (const ImagePlace& place : scene.imagePlaces) {
        picture.height =
            std::max(picture.height, std::min(place.y + place.height, ImageMemory::lines));
    }
    picture.pixels.resize(std::size_t{picture.width} * picture.height);
    for (const ImagePlace& place : scene.imagePlaces) {
        const MemoryPicture& image = images[place.image];
        const mqf2vxb::Image& record = file.images[place.image];
        const std::uint32_t width = std::min(place.width, ImageMemory::columns - place.x);
        const std::uint32_t height = std::min(place.height, picture.height - place.y);
        for (std::uint32_t y = 0; y < height; ++y) {
            Rgba* to = &picture.pixels[std::size_t{place.y + y} * picture.width +
                                       std::size_t{place.x} * pixelsPerColumn];
            for (std::uint32_t i = 0; i < width * pixelsPerColumn; ++i) {
                const std::uint32_t number = y * place.width + i / pixelsPerColumn;
                const std::size_t pixel =
                    std::size_t{y} * image.width +
                    i * (place.clut ? 0 : image.width / place.width) / pixelsPerColumn;
                to[i] = place.clut ? colourOf(columnOf(file, *record.clut, number))
                                   : image.pixels[pixel];
            }
        }
    }
    return picture;
}

}  // namespace vxbtool::scene
