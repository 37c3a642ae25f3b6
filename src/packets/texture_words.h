#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "model/image.h"
#include "packets/drawn_polygon.h"

namespace mqf2vxb {

/// Where an image lies in image memory, as the packets of its polygons tell it.
class ImagePlacement {
public:
    explicit ImagePlacement(const ImageRecord& image);

    /// Texture fields of the corners: page-local u in the low byte, v in the high byte.
    using TextureFields = std::array<std::uint32_t, 4>;

    /// The fields of the first `corners` corners, moved by the image's place in its page; nothing
    /// when the corners lie on different pages.
    [[nodiscard]] std::optional<TextureFields> pageTextures(const DrawnPolygon& drawn,
                                                            std::size_t corners) const;
    /// The fields of a polygon with a texture window, which take no part of the image's place.
    [[nodiscard]] static TextureFields windowTextures(const DrawnPolygon& drawn);

    /// The texture window word.
    [[nodiscard]] std::uint32_t windowWord(const MaterialAppearance& appearance) const;
    [[nodiscard]] std::uint32_t clutField() const { return clut_; }
    [[nodiscard]] std::uint32_t pageField(const MaterialAppearance& appearance) const;

private:
    std::uint32_t mode_;
    ImagePosition position_;
    std::int64_t du_;  // offset of the image inside its page, in texels
    std::int64_t dv_;
    std::uint32_t clut_ = 0;
};

}  // namespace mqf2vxb
