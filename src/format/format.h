#pragma once

#include <cstddef>
#include <cstdint>

/// Constants of the VXB format that its writers and its reader share. Sizes are in words.
namespace mqf2vxb::format {

inline constexpr std::uint32_t fileId = 0x00000050;
/// Set in some offset and count words. Offsets are too small to need it.
inline constexpr std::uint32_t bit31 = 0x80000000;
/// Ends a chain of primitive headers.
inline constexpr std::uint32_t endOfChain = 0xFFFFFFFF;
/// Start sequence of an animated coordinate that names no step.
inline constexpr std::uint32_t unresolvedSequence = 0xFFFF;
/// High half of the word that points at an animated coordinate.
inline constexpr std::uint32_t coordinatePointer = 0x0400;

/// The largest number and size in a word that holds both.
inline constexpr std::uint32_t largestNumber = 0x7FFF;
inline constexpr std::uint32_t largestSize = 0xFFFF;
/// Whether the index of a vertex or normal fits a packet's field. When `bits` are those of several
/// indices joined by "or": whether all of them do.
constexpr bool indexFits(std::uint32_t bits) { return bits <= 0xFFFF; }
/// The same for a component of a colour.
constexpr bool colourFits(std::uint32_t bits) { return bits <= 0xFF; }

inline constexpr std::uint64_t fileHeaderSize = 4;
/// One block before the coordinates, one for each, one after them.
constexpr std::uint64_t blockNumber(std::size_t coordinates) { return coordinates + 2; }
inline constexpr std::uint64_t coordinateSize = 20;

inline constexpr std::uint64_t globalHeaderNumberSize = 1;
// Global headers without their Coordinate Top words.
inline constexpr std::uint32_t independentGlobalHeaderSize = 4;
inline constexpr std::uint32_t sharedGlobalHeaderSize = 6;
inline constexpr std::uint32_t animationGlobalHeaderSize = 5;
inline constexpr std::uint32_t imageGlobalHeaderSize = 3;

/// Next pointer, global header pointer and number of types.
inline constexpr std::uint64_t primitiveHeaderSize = 3;
/// Type, number and size, and packet offset.
inline constexpr std::uint64_t typeDescriptionSize = 3;
/// The size that stands in a type description: the words from that word on.
inline constexpr std::uint32_t typeDescriptionRest = 2;
inline constexpr std::uint64_t sharedVertexHeaderSize = 11;
inline constexpr std::uint32_t sharedVertexRest = 7;

/// The size of a primitive header that lists so many types; without types there is no header.
constexpr std::uint64_t typesHeaderSize(std::size_t types) {
    return types > 0 ? primitiveHeaderSize + typeDescriptionSize * types : 0;
}

/// A vertex or normal.
inline constexpr std::uint64_t pointSize = 2;
/// Factor on the components of a normal.
inline constexpr float normalScale = 4096.0F;

/// Type, and index number and size.
inline constexpr std::uint64_t motionHeaderSize = 2;
/// An animated coordinate without its sequence headers.
inline constexpr std::uint64_t animationIndexSize = 6;
/// The size that stands in a motion's header: the words from that word on.
constexpr std::uint64_t motionSize(std::uint64_t indexWords) { return 1 + indexWords; }
/// Type, and image number and size.
inline constexpr std::uint64_t imageTypeSize = 2;

/// A word that holds a number and a size, bit 31 set.
constexpr std::uint32_t numberAndSize(std::uint32_t number, std::uint32_t size) {
    return bit31 | number << 16U | size;
}

}  // namespace mqf2vxb::format
