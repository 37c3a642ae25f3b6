#include "vxbtool/pictures/gif_frame.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace vxbtool::pictures {
namespace {

constexpr std::size_t screenHeader = 13;
constexpr std::uint8_t extension = 0x21;
constexpr std::uint8_t frameSign = 0x2C;

/// The bytes of a file, with zeros behind its end.
class Bytes {
public:
    explicit Bytes(std::string_view file) : file_(file) {}

    [[nodiscard]] std::uint8_t operator[](std::size_t i) const {
        return i < file_.size() ? static_cast<std::uint8_t>(file_[i]) : std::uint8_t{0};
    }
    [[nodiscard]] std::uint32_t word(std::size_t i) const {
        return (*this)[i] | static_cast<std::uint32_t>((*this)[i + 1]) << 8U;
    }

private:
    std::string_view file_;
};

/// Where the descriptor of the first frame stands.
std::optional<std::size_t> firstFrame(const Bytes& bytes) {
    constexpr std::uint8_t hasColours = 0x80;
    const std::uint8_t flags = bytes[10];
    std::size_t at = screenHeader;
    if ((flags & hasColours) != 0) {
        at += std::size_t{3} << ((flags & 7U) + 1);
    }
    while (bytes[at] == extension) {
        at += 2;
        while (bytes[at] != 0) {
            at += std::size_t{bytes[at]} + 1;
        }
        ++at;
    }
    return bytes[at] == frameSign ? std::optional(at) : std::nullopt;
}

}  // namespace

void clearBesideFrame(std::string_view file, Picture& picture) {
    const Bytes bytes(file);
    const std::optional<std::size_t> frame =
        file.starts_with("GIF8") ? firstFrame(bytes) : std::nullopt;
    if (!frame) {
        return;
    }
    const std::uint32_t left = bytes.word(*frame + 1);
    const std::uint32_t top = bytes.word(*frame + 3);
    const std::uint32_t right = left + bytes.word(*frame + 5);
    const std::uint32_t bottom = top + bytes.word(*frame + 7);
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            if (x < left || x >= right || y < top || y >= bottom) {
                picture.texels[std::size_t{y} * picture.width + x] = {};
            }
        }
    }
}

}  // namespace vxbtool::pictures
