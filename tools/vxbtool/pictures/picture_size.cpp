#include "vxbtool/pictures/picture_size.h"

#include <algorithm>

#include <fmt/core.h>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

void requireSoundSize(std::uint32_t width, std::uint32_t height, std::size_t fileSize,
                      std::size_t texelsOfByte) {
    if (width < 1 || height < 1) {
        throw PictureFault("the picture has no texels");
    }
    const std::size_t texels = std::size_t{width} * height;
    if (std::max(width, height) > longestSide || texels > largestPicture) {
        throw PictureFault(fmt::format("{} x {} texels are more than {} in all or {} on a side",
                                       width, height, largestPicture, longestSide));
    }
    if (texels / texelsOfByte > fileSize) {
        throw PictureFault(
            fmt::format("{} bytes cannot hold {} x {} texels", fileSize, width, height));
    }
}

}  // namespace vxbtool::pictures
