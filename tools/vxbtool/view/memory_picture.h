#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "vxbtool/scene/image_memory.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::view {

/// The part of image memory that images cover, as one picture.
struct MemoryPicture {
    // In columns and lines.
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t perColumn =
        1;  ///< texels of the picture for one column: 4 where texels of 4 bits are
    std::vector<scene::Rgba> texels;
};

/// What is known of the texels of an image that the file itself does not say.
struct ImageReading {
    std::uint32_t depth = 16;  ///< bits of a texel
    std::optional<scene::ImagePlace> clut;
};

/// How each image is read: as polygons use it, else as its colour table says.
std::vector<ImageReading> imageReadings(const mqf2vxb::VxbFile& file, const scene::Scene& scene);

/// Nothing when the file has no images.
std::optional<MemoryPicture> memoryPicture(const scene::Scene& scene,
                                           const scene::ImageMemory& memory,
                                           const std::vector<ImageReading>& readings);

}  // namespace vxbtool::view
