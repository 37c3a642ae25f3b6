#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "vxbtool/render/fault.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::render {

/// The largest picture: pixels on a side, and in all.
inline constexpr std::uint32_t mostPixelsOfSide = 16384;
inline constexpr std::uint64_t mostPixels = std::uint64_t{1} << 26U;
/// The most views of a sheet.
inline constexpr std::uint32_t mostViews = 256;

/// The most pixels that the triangles of a picture cover, each triangle by itself: of any picture, and
/// more for each pixel of it.
inline constexpr double mostCovered = std::uint64_t{1} << 26U;
inline constexpr double mostCoveredPerPixel = 32;

/// From where a model is seen, in degrees.
struct Direction {
    float turn = 30;  ///< 0 sees its front, 90 its left side
    float tilt = 15;  ///< 90 sees it from above
};

struct Request {
    std::uint32_t width = 800;
    std::uint32_t height = 600;
    Direction direction;
    std::uint32_t views = 1;  ///< around the model, side by side, in lines
    std::optional<std::uint32_t> motion;
    double frame = 0;
    std::optional<std::uint32_t> focus;  ///< the coordinate to show, with those below it
    /// Red, green and blue; none: transparent.
    std::optional<std::array<std::uint8_t, 3>> background{{96, 104, 112}};
    bool twoSides = false;  ///< triangles that face away from the viewer are drawn too
};

/// Draws a scene and returns the bytes of a PNG file. Throws a RenderFault when no driver is there,
/// when the request does not fit the scene, and always in a program that was built without render.
std::string drawPng(const scene::Scene& scene, const Request& request);

}  // namespace vxbtool::render
