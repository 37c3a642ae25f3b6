#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// How many colours a texture has: 16 or 256 in a table, or each texel its own. `automatic` takes 16
/// where they come near enough to the picture, else 256, and no table where one costs more memory
/// than it saves.
enum class Colours : std::uint8_t { automatic, sixteen, many, direct };

/// 16-bit colours: five bits each of red (the lowest), green and blue, and a mark. A value of 0 is
/// not drawn, so that a black that is drawn has the mark.
inline constexpr std::uint16_t markBit = 0x8000;
inline constexpr std::uint16_t notDrawn = 0;

/// The nearest 16-bit colour of an opaque texel.
std::uint16_t colour16(const Rgba& colour);
/// The colour that a screen shows for it; alpha is 0 for the value 0, else 255.
Rgba colourOf(std::uint16_t colour);

struct Reduction {
    Colours colours = Colours::automatic;
    bool dither = true;
    bool marked = false;  ///< all that is drawn has the mark, not only black
};

/// A picture in the colours that a file can hold.
struct ReducedPicture {
    std::uint32_t width = 0;  ///< in texels
    std::uint32_t height = 0;
    std::uint32_t depth = 16;           ///< bits of a texel: 4, 8 or 16
    std::vector<std::uint16_t> table;   ///< 16 or 256 colours; empty at 16 bits
    std::vector<std::uint16_t> texels;  ///< indices into the table, or colours at 16 bits
    std::size_t colours = 0;            ///< different values among the texels
    /// Peak signal-to-noise ratio of the drawn texels against the picture, in decibels: about 40 is
    /// the best that five bits a colour can be; infinite when nothing differs.
    double psnr = 0;
};

/// Reduces a picture; the same picture becomes the same words every time, whatever the machine has of
/// processors. Texels that are less than half opaque become the value 0. A picture of few enough
/// colours of 15 bits keeps them all as they are.
ReducedPicture reduced(const Picture& picture, const Reduction& reduction);

}  // namespace vxbtool::pictures
