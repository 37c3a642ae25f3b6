#include "vxbtool/render/tile.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <fmt/core.h>

namespace vxbtool::render {
namespace {

constexpr GLsizei wantedSamples = 4;

GLsizei samplesOf(const Gl& gl) {
    GLint most = 0;
    gl.getIntegerv(GL_MAX_SAMPLES, &most);
    return std::min<GLsizei>(most, wantedSamples);
}

/// A pixel that the driver has added up, as it stands in a file: the colour is not multiplied by alpha
/// there. Light that was added where nothing is opaque needs as much alpha as it is bright.
void putPixel(const std::uint8_t* drawn, std::uint8_t* pixel) {
    const std::uint32_t alpha = std::max({drawn[0], drawn[1], drawn[2], drawn[3]});
    for (std::size_t i = 0; i < 3; ++i) {
        pixel[i] =
            static_cast<std::uint8_t>(alpha == 0 ? 0 : (drawn[i] * 255U + alpha / 2) / alpha);
    }
    pixel[3] = static_cast<std::uint8_t>(alpha);
}

}  // namespace

Tile::Tile(const Gl& gl)
    : gl_(gl),
      samples_(samplesOf(gl)),
      colour_(buffer(GL_RGBA8, samples_)),
      depth_(buffer(GL_DEPTH_COMPONENT24, samples_)),
      drawn_(framebuffer(colour_, &depth_)),
      resolvedColour_(buffer(GL_RGBA8, 0)),
      resolved_(framebuffer(resolvedColour_, nullptr)) {
    gl.checkErrors();
}

GlName Tile::buffer(GLenum format, GLsizei samples) const {
    GlName name(gl_.genRenderbuffers, gl_.deleteRenderbuffers);
    gl_.bindRenderbuffer(GL_RENDERBUFFER, name.get());
    gl_.renderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, size, size);
    return name;
}

GlName Tile::framebuffer(const GlName& colour, const GlName* depth) const {
    GlName name(gl_.genFramebuffers, gl_.deleteFramebuffers);
    gl_.bindFramebuffer(GL_FRAMEBUFFER, name.get());
    gl_.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                colour.get());
    if (depth != nullptr) {
        gl_.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER,
                                    depth->get());
    }
    if (const GLenum status = gl_.checkFramebufferStatus(GL_FRAMEBUFFER);
        status != GL_FRAMEBUFFER_COMPLETE) {
        throw RenderFault(
            fmt::format("the driver cannot draw into its own buffers (0x{:04x})", status));
    }
    return name;
}

void Tile::begin(const PixelArea& area, const std::array<float, 4>& background) const {
    gl_.bindFramebuffer(GL_FRAMEBUFFER, drawn_.get());
    gl_.viewport(0, 0, static_cast<GLsizei>(area.width), static_cast<GLsizei>(area.height));
    gl_.clearColor(background[0], background[1], background[2], background[3]);
    gl_.depthMask(GL_TRUE);
    gl_.clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void Tile::end(const PixelArea& area, std::uint32_t x, std::uint32_t y, Picture& picture) const {
    const auto width = static_cast<GLsizei>(area.width);
    const auto height = static_cast<GLsizei>(area.height);
    gl_.bindFramebuffer(GL_READ_FRAMEBUFFER, drawn_.get());
    gl_.bindFramebuffer(GL_DRAW_FRAMEBUFFER, resolved_.get());
    gl_.blitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    gl_.bindFramebuffer(GL_READ_FRAMEBUFFER, resolved_.get());
    const std::size_t line = area.width * Picture::channels;
    std::vector<std::uint8_t> bytes(line * area.height);
    gl_.readPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    gl_.checkErrors();
    // The driver's lines begin at the bottom.
    for (std::uint32_t row = 0; row < area.height; ++row) {
        const std::uint8_t* from = &bytes[(area.height - 1 - row) * line];
        std::uint8_t* to =
            &picture.bytes[(std::size_t{y + row} * picture.width + x) * Picture::channels];
        for (std::uint32_t i = 0; i < area.width; ++i) {
            putPixel(from + i * Picture::channels, to + i * Picture::channels);
        }
    }
}

}  // namespace vxbtool::render
