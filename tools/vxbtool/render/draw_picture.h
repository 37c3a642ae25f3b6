#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "vxbtool/render/camera.h"
#include "vxbtool/render/fault.h"
#include "vxbtool/render/picture.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::render {

/// The largest picture: pixels on a side, and in all.
inline constexpr std::uint32_t mostPixelsOfSide = 16384;
inline constexpr std::uint64_t mostPixels = std::uint64_t{1} << 26U;
/// The most views of a sheet.
inline constexpr std::uint32_t mostViews = 256;

struct PictureRequest {
    std::uint32_t width = 800;
    std::uint32_t height = 600;
    Direction direction;
    std::uint32_t views = 1;  ///< around the model, side by side, in lines
    std::optional<std::uint32_t> motion;
    double frame = 0;
    std::optional<std::uint32_t> focus;                      ///< see makeTriangles()
    std::optional<std::array<std::uint8_t, 3>> background;  ///< none: transparent
    bool twoSides = false;
};

/// Draws a scene. Throws a RenderFault when no driver is there, or the request does not fit the scene.
Picture drawPicture(const scene::Scene& scene, const PictureRequest& request);

}  // namespace vxbtool::render
