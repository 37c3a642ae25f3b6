#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxbtool::render {

/// A finished picture: red, green, blue and alpha (not multiplied into the colours), line after line
/// from the top.
struct Picture {
    static constexpr std::size_t channels = 4;

    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes;
};

/// The bytes of its PNG file, without alpha when all of the picture is opaque. Throws a RenderFault.
std::string pngFileOf(const Picture& picture);

}  // namespace vxbtool::render
