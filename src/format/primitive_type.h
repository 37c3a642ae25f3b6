#pragma once

#include <cstdint>

namespace mqf2vxb {

/// The 32-bit type word of a primitive: names the form of its packets.
using PrimitiveTypeCode = std::uint32_t;

namespace type_code {

inline constexpr PrimitiveTypeCode textured = 0x00000001;
/// One colour word per corner, in the lit families.
inline constexpr PrimitiveTypeCode colourPerCorner = 0x00000002;
/// One normal per corner in the lit families, one colour per corner in the unlit ones.
inline constexpr PrimitiveTypeCode smooth = 0x00000004;
inline constexpr PrimitiveTypeCode triangle = 0x00000008;
inline constexpr PrimitiveTypeCode quadrangle = 0x00000010;
/// A mesh of more than one polygon.
inline constexpr PrimitiveTypeCode strip = 0x00000018;
inline constexpr PrimitiveTypeCode sprite = 0x00000020;
inline constexpr PrimitiveTypeCode unlit = 0x00040040;
inline constexpr PrimitiveTypeCode doubleImage = 0x00000100;
inline constexpr PrimitiveTypeCode window = 0x00000200;
/// Mirrors of two material flags; neither changes a packet's form.
inline constexpr PrimitiveTypeCode flag02 = 0x00100000;
inline constexpr PrimitiveTypeCode flag04 = 0x00200000;
/// Only in written type words: the first header of the first object coordinate, the first motion.
inline constexpr PrimitiveTypeCode first = 0x00800000;
inline constexpr PrimitiveTypeCode shared = 0x01000000;

/// Type of the shared-vertex primitive.
inline constexpr PrimitiveTypeCode sharedVertex = 0x01000000;
inline constexpr PrimitiveTypeCode image = 0x02000000;
inline constexpr PrimitiveTypeCode imageWithClut = 0x02000001;
/// Target type of a motion, and the base of the key-frame types.
inline constexpr PrimitiveTypeCode animation = 0x03000000;

/// The part of a polygon's code that names its packet form.
constexpr PrimitiveTypeCode form(PrimitiveTypeCode code) {
    return code & ~(shared | flag04 | flag02);
}

constexpr bool isStrip(PrimitiveTypeCode code) { return (code & strip) == strip; }

}  // namespace type_code
}  // namespace mqf2vxb
