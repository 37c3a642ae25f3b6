#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vxbtool {

/// A PNG file of pixels with four bytes each, red, green, blue and alpha, line after line.
std::string pngOf(std::uint32_t width, std::uint32_t height, std::span<const std::uint8_t> pixels);

}  // namespace vxbtool
