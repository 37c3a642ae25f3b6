#pragma once

#include <cstddef>
#include <cstdint>

#include "format/primitive_type.h"

namespace mqf2vxb {

/// How the key frames of one type are written on their line and in the file: first values of 32
/// bits, then values of 16 bits packed two to a word. Every value is a translation, then a
/// rotation, then a scale, as far as the type has them; the bare animation type has a pair of
/// values of its own.
struct KeyFrameForm {
    PrimitiveTypeCode type;
    std::size_t wideValues;  ///< of 32 bits
    std::size_t halfValues;  ///< of 16 bits

    static constexpr std::size_t mostValues = 9;

    [[nodiscard]] constexpr std::size_t values() const { return wideValues + halfValues; }
    [[nodiscard]] constexpr std::size_t words() const { return wideValues + (halfValues + 1) / 2; }
};

/// The form of a key-frame type; null when the format has none.
const KeyFrameForm* findKeyFrameForm(PrimitiveTypeCode type);

}  // namespace mqf2vxb
