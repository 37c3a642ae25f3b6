#pragma once

#include <cstdint>

namespace mqf2vxb {

// How packets tell where a texture lies in image memory: each field with its way in and out.

/// The page field. A page is 64 columns wide and 256 lines high.
struct TexturePage {
    std::uint32_t x;         ///< in columns; of any place inside the page
    std::uint32_t y;         ///< in lines; of any place inside the page
    std::uint32_t mode;      ///< pixel depth: 0 4-bit, 1 8-bit, 2 16-bit
    std::uint32_t flagBits;  ///< of the material, 0 to 3

    /// Bits of a pixel; 0 for the unused mode.
    [[nodiscard]] constexpr std::uint32_t depth() const { return mode < 3 ? 4U << mode : 0; }
};

constexpr std::uint32_t pageField(const TexturePage& page) {
    return (page.mode & 3U) << 7U | (page.flagBits & 3U) << 5U | (page.y & 0x200U) << 2U |
           (page.y & 0x100U) >> 4U | (page.x & 0x3C0U) >> 6U;
}
/// With the page's first column and line.
constexpr TexturePage texturePage(std::uint32_t field) {
    return {(field & 0xFU) << 6U, (field & 0x10U) << 4U | (field & 0x800U) >> 2U, field >> 7U & 3U,
            field >> 5U & 3U};
}
/// The bits that a page field can have.
inline constexpr std::uint32_t pageFieldBits = 0x09FF;

/// The field of the colour lookup table's place, in columns and lines; the format keeps each 16th
/// column.
struct ClutPosition {
    std::uint32_t x;
    std::uint32_t y;
};

constexpr std::uint32_t clutField(const ClutPosition& clut) {
    return (((clut.x >> 4U) & 63U) + (clut.y << 6U)) & 0xFFFFU;
}
constexpr ClutPosition clutPosition(std::uint32_t field) {
    return {(field & 63U) << 4U, field >> 6U};
}

/// The texture window word: the size of the repeated area and its place in the page, in texels. The
/// format keeps steps of 8 texels, and of each number its low 8 bits.
struct TextureWindow {
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t x;
    std::uint32_t y;
};

/// What the window word begins with, in its high 12 bits.
inline constexpr std::uint32_t windowMark = 0xE20;

constexpr std::uint32_t windowWord(const TextureWindow& window) {
    const auto field = [](std::uint32_t texels) { return (texels & 0xF8U) >> 3U; };
    return field(0U - window.width) | field(0U - window.height) << 5U | field(window.x) << 10U |
           field(window.y) << 15U | windowMark << 20U;
}
constexpr TextureWindow textureWindow(std::uint32_t word) {
    const auto texels = [word](unsigned shift) { return (word >> shift & 0x1FU) << 3U; };
    return {256 - texels(0), 256 - texels(5), texels(10), texels(15)};
}

}  // namespace mqf2vxb
