#include "vxbtool/view/memory_picture.h"

#include <algorithm>

#include "format/texture_fields.h"
#include "vxbtool/shared/image_depths.h"

namespace vxbtool::view {
namespace {

using scene::ImageMemory;
using scene::ImagePlace;

constexpr std::uint32_t direct = 16;  // bits of texels that are colours themselves

/// The bits of a texel that a colour table has a colour for each of.
std::uint32_t depthOfTable(std::uint32_t colours) {
    constexpr std::uint32_t shortTable = 16;
    return colours <= shortTable ? 4 : 8;
}

/// The picture's columns of one image, of which each is a few texels wide.
class ImagePainter {
public:
    ImagePainter(const ImageMemory& memory, MemoryPicture& picture)
        : memory_(memory), picture_(picture) {}

    void paint(const ImagePlace& place, const ImageReading& reading) {
        const std::uint32_t right = std::min(place.x + place.width, ImageMemory::columns);
        const std::uint32_t bottom = std::min(place.y + place.height, ImageMemory::lines);
        const std::uint32_t depth = place.clut || !reading.clut ? direct : reading.depth;
        for (std::uint32_t y = place.y; y < bottom; ++y) {
            for (std::uint32_t x = place.x; x < right; ++x) {
                paintColumn(x, y, depth, reading);
            }
        }
    }

private:
    void paintColumn(std::uint32_t x, std::uint32_t y, std::uint32_t depth,
                     const ImageReading& reading) {
        const std::uint32_t column = memory_.column(x, y);
        const std::uint32_t columns = picture_.width;
        const std::size_t first =
            (std::size_t{y - picture_.y} * columns + (x - picture_.x)) * picture_.perColumn;
        for (std::uint32_t i = 0; i < picture_.perColumn; ++i) {
            const std::uint32_t texel = i * (direct / depth) / picture_.perColumn;
            const std::uint32_t value = column >> (texel * depth) & ((1U << depth) - 1U);
            picture_.texels[first + i] = scene::colourOf(
                depth == direct ? static_cast<std::uint16_t>(value)
                                : memory_.column(reading.clut->x + value, reading.clut->y));
        }
    }

    const ImageMemory& memory_;
    MemoryPicture& picture_;
};

}  // namespace

std::vector<ImageReading> imageReadings(const mqf2vxb::VxbFile& file, const scene::Scene& scene) {
    std::vector<ImageReading> readings(file.images.size());
    for (const ImagePlace& place : scene.imagePlaces) {
        if (place.clut) {
            readings[place.image] = {depthOfTable(place.width), place};
        }
    }
    for (const scene::Picture& picture : scene.pictures) {
        for (const std::uint32_t image : picture.images) {
            if (picture.clut && !readings[image].clut) {
                const mqf2vxb::ClutPosition clut = mqf2vxb::clutPosition(*picture.clut);
                readings[image].clut =
                    ImagePlace{image, clut.x, clut.y, 1U << picture.depth, 1, true};
                readings[image].depth = picture.depth;
            }
        }
    }
    const std::vector<DepthSet> depths = imageDepths(file);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        if (const unsigned known = onlyDepth(depths[i]); known > 0) {
            readings[i].depth = known;
        }
    }
    return readings;
}

std::optional<MemoryPicture> memoryPicture(const scene::Scene& scene, const ImageMemory& memory,
                                           const std::vector<ImageReading>& readings) {
    if (scene.imagePlaces.empty()) {
        return std::nullopt;
    }
    std::uint32_t left = ImageMemory::columns;
    std::uint32_t top = ImageMemory::lines;
    std::uint32_t right = 0;
    std::uint32_t bottom = 0;
    std::uint32_t leastDepth = direct;
    for (const ImagePlace& place : scene.imagePlaces) {
        left = std::min(left, place.x);
        top = std::min(top, place.y);
        right = std::max(right, std::min(place.x + place.width, ImageMemory::columns));
        bottom = std::max(bottom, std::min(place.y + place.height, ImageMemory::lines));
        leastDepth = std::min(leastDepth, readings[place.image].depth);
    }
    MemoryPicture picture{left, top, right - left, bottom - top, direct / leastDepth, {}};
    picture.texels.resize(std::size_t{picture.width} * picture.height * picture.perColumn);
    ImagePainter painter(memory, picture);
    for (const ImagePlace& place : scene.imagePlaces) {
        painter.paint(place, readings[place.image]);
    }
    return picture;
}

}  // namespace vxbtool::view
