#pragma once

#include <cstdint>

#include "vxbtool/model_text/model_text.h"
#include "vxbtool/pictures/memory_map.h"
#include "vxbtool/pictures/palette.h"

namespace vxbtool::pictures {

/// Columns of 16 bits that the lines of a texture take: an even number, so that lines are whole words.
std::uint32_t columnsOf(std::uint32_t width, std::uint32_t depth);

/// The texture of a picture whose texels and table have these places. The texels that fill a line up
/// are those of its end.
model_text::Texture textureOf(const ReducedPicture& picture, const Place& place,
                              const Place& table);

}  // namespace vxbtool::pictures
