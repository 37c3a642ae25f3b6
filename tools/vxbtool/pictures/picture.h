#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "files/input_files.h"

/// Pictures from PNG, JPEG and the like on their way into image memory: picture.h reads and resizes
/// them, palette.h finds their colours, placing.h their places.
namespace vxbtool::pictures {

/// Red, green, blue and alpha, 0 to 255: colours as a screen shows them, not multiplied by alpha.
using Rgba = std::array<std::uint8_t, 4>;

struct Picture {
    std::uint32_t width = 0;  ///< in texels; one at least, as is the height
    std::uint32_t height = 0;
    std::vector<Rgba> texels;  ///< line after line, the first at the top

    bool operator==(const Picture&) const = default;
};

/// A picture, or several together, of which no texture can be made; what() is the cause, without the
/// name of a file.
class PictureFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The most texels of a picture that is read, and the most in one direction.
inline constexpr std::size_t largestPicture = std::size_t{1} << 26U;
inline constexpr std::uint32_t longestSide = 16384;

/// Reads a PNG, JPEG, TGA, BMP, GIF (its first picture), PSD, PGM or PPM file from its bytes. One that is
/// cut off, larger than the limits, or much larger than its bytes can hold throws PictureFault.
Picture readPicture(std::string_view bytes);

class TexelBudget;

/// The same from a file, within the budget. One that cannot be opened throws PictureFault, one that
/// InputFiles refuses mqf2vxb::Report.
Picture readPictureFile(const std::string& name, mqf2vxb::InputFiles& files, TexelBudget& budget);

/// What lies beyond the edges of a picture when it is resized: its last texels, or the picture again.
enum class Edges : std::uint8_t { clamp, repeat };

/// The picture in another size, both 1 or more; averages are those of the light that texels stand
/// for, and a texel counts as much as it is opaque.
Picture resized(const Picture& picture, std::uint32_t width, std::uint32_t height, Edges edges);

/// The picture times a colour, 0 to 1 each for red, green and blue as a screen shows them.
Picture tinted(Picture picture, const std::array<float, 3>& colour);

/// Whether a texel is at least half opaque; others are holes in a texture.
bool isDrawn(const Rgba& texel);

/// Whether the picture has a texel that is not drawn.
bool hasHoles(const Picture& picture);
/// Whether the picture is there to be looked through, like glass or smoke: a quarter of what can be
/// seen of it is neither nearly opaque nor nearly transparent. Soft edges of something that is cut out
/// do not make that many texels.
bool isTranslucent(const Picture& picture);

}  // namespace vxbtool::pictures
