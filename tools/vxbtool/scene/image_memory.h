#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// Image memory with all images of a file where their positions say: lines of 1024 columns of 16
/// bits. A place beyond the last column or line is the one that far from the first.
class ImageMemory {
public:
    static constexpr std::uint32_t columns = 1024;
    static constexpr std::uint32_t lines = 1024;

    /// Puts the images there in their order, each over those before it. Pixels whose words do not make
    /// their size are left out, and a warning tells.
    ImageMemory(const mqf2vxb::VxbFile& file, std::vector<std::string>& warnings);

    /// What a place holds; 0 where nothing lies.
    [[nodiscard]] std::uint16_t column(std::uint32_t x, std::uint32_t y) const {
        return values_.empty() ? std::uint16_t{0} : values_[place(x, y)];
    }
    /// The image whose pixels or colour table lie there; nothing where none does.
    [[nodiscard]] std::optional<std::uint32_t> image(std::uint32_t x, std::uint32_t y) const {
        const std::uint32_t owner = owners_.empty() ? 0 : owners_[place(x, y)];
        return owner > 0 ? std::optional(owner - 1) : std::nullopt;
    }
    /// How many columns of all lines hold something else than those of another memory.
    [[nodiscard]] std::size_t differing(const ImageMemory& other) const;
    [[nodiscard]] const std::vector<ImagePlace>& places() const { return places_; }

private:
    static std::size_t place(std::uint32_t x, std::uint32_t y) {
        return std::size_t{y % lines} * columns + x % columns;
    }
    [[nodiscard]] bool put(const mqf2vxb::VxbFile& file, std::uint32_t image,
                           const mqf2vxb::ImageBlock& block, bool clut);

    std::vector<std::uint16_t> values_;  // empty without images
    std::vector<std::uint32_t> owners_;  // 1 more than the image's number; 0 for none
    std::vector<ImagePlace> places_;
};

/// A colour of 16 bits as a picture has it.
Rgba colourOf(std::uint16_t value);

}  // namespace vxbtool::scene
