#include "vxbtool/import/texture_coordinates.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vxbtool::importing {
namespace {

void settle(ShapePolygon& polygon, std::size_t axis, Wrap wrap) {
    if (wrap == Wrap::clamp) {
        for (ShapeCorner& corner : polygon.used()) {
            corner.texture.at(axis) = std::clamp(corner.texture.at(axis), 0.0F, 1.0F);
        }
        return;
    }
    float least = std::numeric_limits<float>::max();
    for (ShapeCorner& corner : polygon.used()) {
        corner.texture.at(axis) /= wrap == Wrap::mirror ? 2 : 1;
        least = std::min(least, corner.texture.at(axis));
    }
    const float whole = std::floor(least + textureSlack);
    for (ShapeCorner& corner : polygon.used()) {
        corner.texture.at(axis) -= whole;
    }
}

/// The corner's texel, the nearest one inside.
std::int32_t texel(float coordinate, float middle, std::uint32_t size, bool window) {
    constexpr double half = 0.5;
    // What lies in the middle between two texels goes to the one that the polygon shows.
    const double place = static_cast<double>(coordinate) * size - half;
    const double rounded = coordinate > middle ? std::ceil(place - half) : std::floor(place + half);
    constexpr std::uint32_t mostTexels = 256;
    const double last = (window ? mostTexels : std::min(size, mostTexels)) - 1;
    return static_cast<std::int32_t>(std::clamp(rounded, 0.0, last));
}

}  // namespace

void settleTextureCoordinates(const Materials& materials, Shape& shape) {
    for (ShapePolygon& polygon : shape.polygons) {
        const Part& part = shape.parts[polygon.part];
        if (part.textured) {
            const TextureUse& use = *materials.materials[part.material].texture;
            settle(polygon, 0, use.across);
            settle(polygon, 1, use.down);
        }
    }
}

bool repeats(const ShapePolygon& polygon) {
    return std::ranges::any_of(polygon.used(), [](const ShapeCorner& corner) {
        return std::max(corner.texture[0], corner.texture[1]) > 1 + textureSlack;
    });
}

std::array<std::int32_t, 8> texelsOf(const ShapePolygon& polygon,
                                     const pictures::PlacedTexture& texture, bool window) {
    std::array<std::int32_t, 8> result{};
    for (std::size_t axis = 0; axis < 2; ++axis) {
        float least = std::numeric_limits<float>::max();
        float most = std::numeric_limits<float>::lowest();
        for (const ShapeCorner& corner : polygon.used()) {
            least = std::min(least, corner.texture.at(axis));
            most = std::max(most, corner.texture.at(axis));
        }
        const std::uint32_t size = axis == 0 ? texture.width : texture.height;
        for (std::size_t k = 0; k < polygon.cornerNum; ++k) {
            result.at(k * 2 + axis) =
                texel(polygon.corners.at(k).texture.at(axis), (least + most) / 2, size, window);
        }
    }
    return result;
}

}  // namespace vxbtool::importing
