#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/render/camera.h"

namespace vxbtool::render {

/// Shares a picture among views, in lines from the top left; the views are as large as they can be
/// when each is to hold a rectangle of 4 to 3. Empty when there is not a pixel for each.
std::vector<PixelArea> sheetOf(std::uint32_t width, std::uint32_t height, std::uint32_t views);

}  // namespace vxbtool::render
