#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// A picture of image memory or of a part of it.
struct MemoryPicture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<Rgba> pixels;  ///< line after line, the first at the top; a value of 0 has alpha 0
};

/// Every image of the file, each of its texels a pixel; empty for one whose size its words do not
/// make. The depth is that of polygons that use it, else what its colour table suggests; the colours
/// are those of its own table, else of the polygons' one, else of the one at (0, 0).
std::vector<MemoryPicture> imagePictures(const mqf2vxb::VxbFile& file, const Scene& scene);

/// A column of image memory is this many pixels wide in the picture of it.
inline constexpr std::uint32_t pixelsPerColumn = 4;

/// Image memory up to its last line that holds something, with all images and colour tables at their
/// places, a pixel for each texel of 4 bits; transparent where nothing lies.
MemoryPicture memoryPicture(const mqf2vxb::VxbFile& file, const Scene& scene);

}  // namespace vxbtool::scene
