#pragma once

#include <array>
#include <cstdint>

#include "vxbtool/import/materials.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/pictures/placing.h"

namespace vxbtool::importing {

/// How far texture coordinates may reach beyond 0 and 1 and still count as inside.
inline constexpr float textureSlack = 1.0F / 512;

/// Brings the texture coordinates of all polygons to where their pictures lie: clamped where the
/// material says so, halved where the picture stands there twice, and moved by whole pictures so that
/// the least of each polygon lies between 0 and 1.
void settleTextureCoordinates(const Materials& materials, Shape& shape);

/// Whether a polygon with settled coordinates goes beyond its picture.
bool repeats(const ShapePolygon& polygon);

/// The texels of a polygon's corners: u, v, u, v and so on, the middle of each the nearest to the
/// corner from inside the polygon. `window` is whether they may go on beyond the texture up to 255.
std::array<std::int32_t, 8> texelsOf(const ShapePolygon& polygon,
                                     const pictures::PlacedTexture& texture, bool window);

}  // namespace vxbtool::importing
