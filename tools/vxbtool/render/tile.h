#pragma once

#include <cstdint>

#include "vxbtool/render/camera.h"
#include "vxbtool/render/gl_functions.h"
#include "vxbtool/render/picture.h"

namespace vxbtool::render {

/// What the driver draws into: a part of a picture, several samples a pixel. Pictures are put together
/// from such parts, so that their size is not the driver's concern.
class Tile {
public:
    /// The most pixels on each side, which every driver has.
    static constexpr std::uint32_t size = 1024;

    explicit Tile(const Gl& gl);

    /// Makes the tile what is drawn into, and clears it to a colour with alpha.
    void begin(const PixelArea& area, const std::array<float, 4>& background) const;
    /// Takes the area out of the driver and puts it into the picture, its corner at (x, y).
    void end(const PixelArea& area, std::uint32_t x, std::uint32_t y, Picture& picture) const;

private:
    GlName buffer(GLenum format, GLsizei samples) const;
    GlName framebuffer(const GlName& colour, const GlName* depth) const;

    const Gl& gl_;
    GLsizei samples_;
    GlName colour_;
    GlName depth_;
    GlName drawn_;
    GlName resolvedColour_;
    GlName resolved_;
};

}  // namespace vxbtool::render
