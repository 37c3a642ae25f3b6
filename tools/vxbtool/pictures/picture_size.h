#pragma once

#include <cstddef>
#include <cstdint>

namespace vxbtool::pictures {

/// The most texels for a byte of a file. No format packs them closer than a PNG file of one bit a
/// texel, whose compression makes at most 1032 bytes of one.
inline constexpr std::size_t closestTexels = std::size_t{8} * 1032;

/// Throws PictureFault for a size that a file announces and that is 0, beyond the limits of pictures,
/// or more than `fileSize` bytes can hold at so many texels a byte.
void requireSoundSize(std::uint32_t width, std::uint32_t height, std::size_t fileSize,
                      std::size_t texelsOfByte = closestTexels);

}  // namespace vxbtool::pictures
