#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "format/primitive_type.h"
#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// The type of the key frames of one word, which the file does not list.
inline constexpr mqf2vxb::PrimitiveTypeCode bareType = mqf2vxb::type_code::animation;

/// Words of a key frame of this type.
std::uint32_t keyFrameWords(mqf2vxb::PrimitiveTypeCode type);

/// The words of all key frames of a file, by their offset among them.
class KeyFrameWords {
public:
    explicit KeyFrameWords(const mqf2vxb::VxbFile& file) : file_(file) {}

    /// Whether the words make whole key frames of a type.
    [[nodiscard]] bool canBe(mqf2vxb::PrimitiveTypeCode type, std::uint32_t first,
                             std::uint32_t end) const;
    /// A type that may take part in covering words.
    struct Part {
        mqf2vxb::PrimitiveTypeCode type = 0;
        bool ratherOne = false;  ///< a key frame at least, when that leaves a way for the others
        std::uint32_t end = 0;   ///< result: behind its last word
    };
    /// Covers words with whole key frames, the parts one behind the other; false when they cannot be.
    [[nodiscard]] bool cover(std::uint32_t first, std::uint32_t end, std::span<Part> parts) const;
    /// The key frames of one type in these words.
    [[nodiscard]] model_text::KeyFrameGroup text(mqf2vxb::PrimitiveTypeCode type,
                                                 std::uint32_t first, std::uint32_t end) const;

private:
    [[nodiscard]] std::uint32_t word(std::uint32_t offset) const {
        return file_.words[file_.animation.keyFrameOffset + offset];
    }

    const mqf2vxb::VxbFile& file_;
};

}  // namespace vxbtool::unpack
