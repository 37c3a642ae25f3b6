#include "vxbtool/pictures/pnm.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include <fmt/core.h>

#include "vxbtool/pictures/picture_size.h"

namespace vxbtool::pictures {
namespace {

constexpr std::string_view whitespace = " \t\n\v\f\r";

/// The next number of the header; white space and comments stand before it.
std::uint32_t numberOf(std::string_view& rest) {
    while (!rest.empty() &&
           (whitespace.find(rest.front()) != std::string_view::npos || rest.front() == '#')) {
        const std::size_t length = rest.front() == '#' ? rest.find('\n') : 1;
        rest.remove_prefix(std::min(length, rest.size()));
    }
    std::uint32_t number = 0;
    const auto [end, fault] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (fault != std::errc()) {
        throw PictureFault(rest.empty()
                               ? "the picture ends early"
                               : "no picture can be read from it: its header has no number "
                                 "where one belongs");
    }
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    return number;
}

}  // namespace

bool isPnm(std::string_view bytes) { return bytes.starts_with("P5") || bytes.starts_with("P6"); }

Picture readPnm(std::string_view bytes) {
    const std::size_t channels = bytes.starts_with("P6") ? 3 : 1;
    std::string_view rest = bytes.substr(2);
    const std::uint32_t width = numberOf(rest);
    const std::uint32_t height = numberOf(rest);
    const std::uint32_t greatest = numberOf(rest);
    requireSoundSize(width, height, bytes.size());
    if (greatest < 1 || greatest > 0xFFFF) {
        throw PictureFault(fmt::format(
            "no picture can be read from it: its greatest value is {}, not 1 to 65535", greatest));
    }
    rest.remove_prefix(std::min<std::size_t>(1, rest.size()));  // the white space behind the header
    const std::size_t valueSize = greatest > 0xFF ? 2 : 1;
    Picture picture{width, height, {}};
    const std::size_t texels = std::size_t{width} * height;
    if (rest.size() < texels * channels * valueSize) {
        throw PictureFault("the picture ends early");
    }
    picture.texels.resize(texels);
    const auto* next = reinterpret_cast<const std::uint8_t*>(rest.data());
    const auto value = [&] {
        std::uint32_t read = *next++;
        if (valueSize == 2) {
            read = read << 8U | *next++;
        }
        constexpr std::uint32_t full = 0xFF;
        return static_cast<std::uint8_t>((std::min(read, greatest) * full + greatest / 2) /
                                         greatest);
    };
    for (Rgba& texel : picture.texels) {
        texel[0] = value();
        texel[1] = channels == 3 ? value() : texel[0];
        texel[2] = channels == 3 ? value() : texel[0];
        texel[3] = 0xFF;
    }
    return picture;
}

}  // namespace vxbtool::pictures
