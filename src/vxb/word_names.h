#pragma once

#include <string_view>

/// The names of the words that findings blame and that descriptions name.
namespace mqf2vxb::word_name {

// File header and blocks.
inline constexpr std::string_view primitiveGlobalHeaderTop = "Primitive Global Header Top";
inline constexpr std::string_view blockNumber = "Block Number";
inline constexpr std::string_view prePrimitiveTop = "Pre Primitive Top";
inline constexpr std::string_view postPrimitiveTop = "Post Primitive Top";

// Coordinates and global headers.
inline constexpr std::string_view coordinateNumber = "Coordinate Number";
inline constexpr std::string_view coordinateTop = "Coordinate Top";
inline constexpr std::string_view primitiveGlobalHeaderNumber = "Primitive Global Header Number";
inline constexpr std::string_view animationPrimitiveGlobalHeaderSize =
    "Animation Primitive Global Header Size";

// Primitive headers.
inline constexpr std::string_view nextPrimitivePointer = "Next Primitive Pointer";
inline constexpr std::string_view independentPrimitiveGlobalHeaderPointer =
    "Independent Primitive Global Header Pointer";
inline constexpr std::string_view sharedPrimitiveGlobalHeaderPointer =
    "Shared Primitive Global Header Pointer";
inline constexpr std::string_view animationPrimitiveGlobalHeaderPointer =
    "Animation Primitive Global Header Pointer";
inline constexpr std::string_view imagePrimitiveGlobalHeaderPointer =
    "Image Primitive Global Header Pointer";
inline constexpr std::string_view typeNumber = "Type Number";
inline constexpr std::string_view type = "Type";
inline constexpr std::string_view polygonNumberSize = "Polygon Number, Size";
inline constexpr std::string_view primitiveIndex = "Primitive Index";
inline constexpr std::string_view sharedVertexNumber = "Shared Vertex Number";
inline constexpr std::string_view sharedVertexSource = "Shared Vertex Offset(src)";
inline constexpr std::string_view sharedVertexDestination = "Shared Vertex Offset(dst)";
inline constexpr std::string_view sharedNormalNumber = "Shared Normal Number";
inline constexpr std::string_view sharedNormalSource = "Shared Normal Offset(src)";
inline constexpr std::string_view sharedNormalDestination = "Shared Normal Offset(dst)";

// Animation.
inline constexpr std::string_view animationTypeNumber = "Animation Type Number";
inline constexpr std::string_view animationType = "Animation Type";
inline constexpr std::string_view indexNumberSize = "Index Number, Size";
inline constexpr std::string_view coordinateOffset = "Coordinate Pointer Offset, Coordinate Offset";
inline constexpr std::string_view sequenceHeaderNumberSize = "Sequence Header Number, Size";
inline constexpr std::string_view sequencePointer = "Sequence Pointer";
inline constexpr std::string_view animationPacketTypeNumber = "Animation Packet Type Number";
inline constexpr std::string_view animationPacketType = "Animation Packet Type";

// Images.
inline constexpr std::string_view imageNumberSize = "Image Number, Size";

}  // namespace mqf2vxb::word_name
