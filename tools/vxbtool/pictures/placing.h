#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "vxbtool/model_text/model_text.h"
#include "vxbtool/pictures/palette.h"
#include "vxbtool/pictures/picture.h"

namespace vxbtool::pictures {

/// A part of image memory, in columns of 16 bits and lines; both ends inside 1024 x 1024.
struct Area {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct ImageMemory {
    Area textures{640, 0, 384, 512};
    /// Where colour tables go, from its first line down; without one they take the last lines of the
    /// textures' area.
    std::optional<Area> tables;
};

/// The longest side of a texture, in texels.
inline constexpr std::uint32_t longestTexture = 256;

/// The picture, no larger than textures are made from: many large ones would fill the memory.
Picture shrunk(Picture picture, Edges edges);

struct WantedTexture {
    Picture picture;
    Reduction reduction;
    /// It has to repeat through a window: its sides become powers of two, 8 texels or more, and its
    /// place a multiple of them, so that a window of its size lies at 0, 0 of it.
    bool repeats = false;
    // Of the picture before it was shrunk; 0: it was not.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct PlacingOptions {
    ImageMemory memory;
    std::uint32_t largest = longestTexture;  ///< no side is longer than this
};

/// One texture in its place. Its size is what texture coordinates run over; the lines in the file may
/// be a few texels longer, to fill their words.
struct PlacedTexture {
    model_text::Texture texture;
    std::uint32_t width = 0;  ///< in texels
    std::uint32_t height = 0;
    std::uint32_t pictureWidth = 0;  ///< of the picture that it was made of
    std::uint32_t pictureHeight = 0;
    std::uint32_t depth = 0;
    std::size_t colours = 0;     ///< different values among the texels
    double psnr = 0;             ///< against the picture in this size; see ReducedPicture
    std::uint32_t halvings = 0;  ///< how often its size was halved because memory was full
    bool repeats = false;
};

struct Placing {
    std::vector<PlacedTexture> textures;  ///< in the order in which they are first wanted
    std::vector<std::size_t> textureOf;   ///< for each wanted one its index in `textures`
};

/// Makes a texture of each wanted picture, equal ones once, and finds them places in which no two
/// meet and none leaves the 256 x 256 texels of its page. When memory is full, the largest get 16
/// colours, where their number is free and these come within 30 decibels, and are halved in size, until all
/// fit; when they never do, PictureFault is thrown.
Placing place(std::span<const WantedTexture> wanted, const PlacingOptions& options);

/// "64 x 32 texels of 4 bits (16 colours) at 640, 0; colour table at 640, 511; 34.5 dB": a line for
/// people, and the comment of the texture's line in the MQF file.
std::string describe(const PlacedTexture& placed);

}  // namespace vxbtool::pictures
