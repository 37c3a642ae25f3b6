#pragma once

#include <cstdint>

/// The drawing code in the top byte of a colour word: the kind of polygon, and bits beside it.
namespace mqf2vxb::drawing_code {

inline constexpr std::uint32_t kindMask = 0xE0;
inline constexpr std::uint32_t face = 0x20;  ///< triangle or quadrangle
inline constexpr std::uint32_t line = 0x40;
inline constexpr std::uint32_t sprite = 0x60;

inline constexpr std::uint32_t flag04 = 0x02;
inline constexpr std::uint32_t textured = 0x04;
inline constexpr std::uint32_t quadrangle = 0x08;       ///< of a face
inline constexpr std::uint32_t colourPerCorner = 0x10;  ///< of a face or a line

/// Sprites of three square sizes have a code of their own; all others have none of these bits.
constexpr std::uint32_t spriteSize(std::int32_t width, std::int32_t height) {
    if (width != height) {
        return 0;
    }
    return width == 1 ? 0x08 : width == 8 ? 0x10 : width == 16 ? 0x18 : 0;
}

}  // namespace mqf2vxb::drawing_code
