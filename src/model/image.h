#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/file_contents.h"
#include "base/table.h"
#include "format/primitive_type.h"

namespace mqf2vxb {

/// 32-bit little-endian words inside a file that was read.
class StoredWords {
public:
    StoredWords() = default;
    /// `bytes` holds a whole number of words.
    explicit StoredWords(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] std::size_t size() const { return bytes_.size() / 4; }
    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    [[nodiscard]] std::string_view bytes() const { return bytes_; }
    [[nodiscard]] std::uint32_t operator[](std::size_t index) const {
        const auto byte = [start = bytes_.data() + 4 * index](std::size_t i) {
            return std::uint32_t{static_cast<unsigned char>(start[i])};
        };
        return byte(0) | byte(1) << 8U | byte(2) << 16U | byte(3) << 24U;
    }
    [[nodiscard]] StoredWords from(std::size_t index) const {
        return StoredWords(bytes_.substr(4 * index));
    }

private:
    std::string_view bytes_;
};

/// A position in image memory, as the first header word of an image block holds it.
struct ImagePosition {
    std::uint32_t x;
    std::uint32_t y;
};

/// The block of an image's pixels or of its colour lookup table: two header words, of which the
/// first is the block's position, and the data.
struct PxlBlock {
    static constexpr std::size_t headerWords = 2;

    std::array<std::uint32_t, headerWords> header{};
    std::size_t dataStart = 0;  ///< in the image file, in bytes; 0 in a block that is absent
    std::size_t dataWords = 0;

    [[nodiscard]] bool present() const { return dataStart != 0; }
    [[nodiscard]] ImagePosition position() const { return {header[0] & 0xFFFFU, header[0] >> 16U}; }
    /// The data in the bytes of the file.
    [[nodiscard]] StoredWords data(std::string_view file) const {
        return StoredWords(file.substr(dataStart, 4 * dataWords));
    }
    bool operator==(const PxlBlock&) const = default;
};

/// One slot of the texture list.
struct ImageRecord {
    PrimitiveTypeCode type = 0;  ///< type_code::image or imageWithClut
    std::string name;
    bool named = false;      ///< a line of the MQF file names this slot
    std::uint32_t mode = 0;  ///< pixel depth: 0 4-bit, 1 8-bit, 2 16-bit
    PxlBlock clut;           ///< absent in an image without CLUT
    PxlBlock pixel;
    /// The file's bytes when they have to be kept; else the file is read again for its data.
    std::optional<FileContents> file;

    [[nodiscard]] bool hasClut() const { return type == type_code::imageWithClut; }
};

/// The images of one type.
struct PixelTypeEntry {
    PrimitiveTypeCode type = 0;
    std::vector<std::size_t> images;  ///< slots, ascending
};

/// `malimage`, the image type table: one entry per type in the order of first appearance. Empty
/// when no images are written.
struct ImageTypes {
    std::vector<PixelTypeEntry> malpxltype;
};

}  // namespace mqf2vxb
