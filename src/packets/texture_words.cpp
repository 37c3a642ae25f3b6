#include "packets/texture_words.h"

#include "format/texture_fields.h"

namespace mqf2vxb {
namespace {

/// A page is 64 columns of image memory wide, each as many texels as its depth packs into 16 bits,
/// and 256 lines high.
constexpr std::uint32_t pageColumns = 64;
constexpr std::uint32_t pageSize = 256;
constexpr std::uint32_t lowByte = 0xFF;

/// How often 256 goes into the sum while it is above 255: how many pages a coordinate lies beyond
/// its image's own.
std::int64_t pageCarry(std::int64_t a, std::int64_t b) {
    const std::int64_t sum = a + b;
    return sum > lowByte ? sum / pageSize : 0;
}

std::uint32_t byteOf(std::int64_t value) { return static_cast<std::uint32_t>(value) & lowByte; }

}  // namespace

ImagePlacement::ImagePlacement(const ImageRecord& image)
    : mode_(image.mode),
      position_(image.pixel.position()),
      du_((position_.x % pageColumns) << (2 - mode_)),
      dv_(position_.y % pageSize) {
    if (image.hasClut()) {
        const ImagePosition clut = image.clut.position();
        clut_ = mqf2vxb::clutField({clut.x, clut.y});
    }
}

std::optional<ImagePlacement::TextureFields>
ImagePlacement::pageTextures(const DrawnPolygon& drawn, std::size_t corners) const {
    TextureFields fields{};
    std::int64_t firstU = 0;
    std::int64_t firstV = 0;
    for (std::size_t i = 0; i < corners; ++i) {
        const std::int64_t u = drawn.u(i);
        const std::int64_t v = drawn.v(i);
        fields[i] = byteOf(u + du_) | byteOf(v + dv_) << 8U;

        // The corners start from one page, that of the image: equal carries are equal pages.
        const std::int64_t pageU = pageCarry(u, du_);
        const std::int64_t pageV = pageCarry(v, dv_);
        if (i == 0) {
            firstU = pageU;
            firstV = pageV;
        } else if (pageU != firstU || pageV != firstV) {
            return std::nullopt;
        }
    }
    return fields;
}

ImagePlacement::TextureFields ImagePlacement::windowTextures(const DrawnPolygon& drawn) {
    TextureFields fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields[i] = byteOf(drawn.u(i)) | byteOf(drawn.v(i)) << 8U;
    }
    return fields;
}

std::uint32_t ImagePlacement::windowWord(const MaterialAppearance& appearance) const {
    const auto size = [](std::int32_t texels) { return static_cast<std::uint32_t>(texels); };
    const auto place = [](std::int64_t texel) { return static_cast<std::uint32_t>(texel); };
    return mqf2vxb::windowWord({size(appearance.windowWidth()), size(appearance.windowHeight()),
                                place(appearance.windowX() + du_),
                                place(appearance.windowY() + dv_)});
}

std::uint32_t ImagePlacement::pageField(const MaterialAppearance& appearance) const {
    return mqf2vxb::pageField({position_.x, position_.y, mode_, appearance.flag >> 3U});
}

}  // namespace mqf2vxb
