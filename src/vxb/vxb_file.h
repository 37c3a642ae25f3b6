#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "format/key_frame_forms.h"
#include "format/packet_forms.h"
#include "format/primitive_type.h"
#include "vxb/findings.h"

/// A VXB file as its words tell it. All offsets are in words from the file's first word. A part
/// that the file does not have is empty; a part of a damaged file holds what could be read.
namespace mqf2vxb {

enum class Section : std::uint8_t {
    header,
    blockTable,
    coordinates,
    globalHeaders,
    primitiveHeaders,
    packets,
    vertices,
    normals,
    animation,
    images,
    none,  ///< words that belong to no section
};
inline constexpr std::size_t sectionNum = static_cast<std::size_t>(Section::none) + 1;

/// The section's name as tools take and show it, for instance "primitive-headers".
std::string_view sectionName(Section section);

/// What a run of words is. The index of a region counts within its part.
enum class Part : std::uint8_t {
    fileHeader,
    blockTable,
    coordinateNumber,
    coordinate,
    globalHeaderNumber,
    globalHeader,     ///< index: its GlobalHeaderKind
    primitiveHeader,  ///< index into VxbFile::primitiveHeaders
    packetGroup,      ///< index into VxbFile::packetGroups
    independentVertices,
    sharedVertices,
    calculatedVertices,
    independentNormals,
    sharedNormals,
    calculatedNormals,
    animationHeader,
    motion,              ///< index into Animation::motions; the motion's own two words
    animatedCoordinate,  ///< index into Animation::coordinates
    keyFrameTypes,
    controlWords,
    keyFrames,
    imageHeader,
    imageType,   ///< index: 0 for the first type of image, 1 for the second
    imageEntry,  ///< index into VxbFile::images
    pixels,
    cluts,
    unknown,
};

Section sectionOf(Part part);

/// A run of words with one meaning. The regions of a file follow each other without a gap.
struct Region {
    Part part;
    std::uint32_t index;
    std::uint32_t offset;
    std::uint32_t words;

    [[nodiscard]] std::uint32_t end() const { return offset + words; }
};

/// The words of one section, as far as they stand together.
struct SectionExtent {
    Section section;
    std::uint32_t offset;
    std::uint32_t words;
};

enum class GlobalHeaderKind : std::uint8_t { independent, shared, animation, image };
inline constexpr std::size_t globalHeaderNum = 4;

/// Words of the global headers, counted from the header's size word.
namespace global_header {
inline constexpr std::uint32_t independentPrimitiveTop = 1;
inline constexpr std::uint32_t independentVertexTop = 2;
inline constexpr std::uint32_t independentNormalTop = 3;

inline constexpr std::uint32_t sharedPrimitiveTop = 1;
inline constexpr std::uint32_t sharedVertexTop = 2;
inline constexpr std::uint32_t calculatedVertexTop = 3;
inline constexpr std::uint32_t sharedNormalTop = 4;
inline constexpr std::uint32_t calculatedNormalTop = 5;

inline constexpr std::uint32_t complementFunctionTop = 2;
inline constexpr std::uint32_t controlTop = 3;
inline constexpr std::uint32_t matrixTop = 4;

inline constexpr std::uint32_t imageTop = 1;
inline constexpr std::uint32_t clutTop = 2;
}  // namespace global_header

struct GlobalHeader {
    std::uint32_t offset = 0;
    std::uint32_t words = 0;
};

struct Coordinate {
    std::uint32_t offset = 0;
    std::array<std::int16_t, 9> matrix{};  ///< row by row
    std::array<std::int32_t, 3> translation{};
    std::array<std::int16_t, 3> extra{};
    std::optional<std::uint32_t> parent;  ///< nothing for a root
    /// The same as the file names it; where parents go round in a ring, `parent` makes one a root.
    std::optional<std::uint32_t> namedParent;
    /// The first primitive header of the coordinate's block, an index of the headers.
    std::optional<std::uint32_t> header;
};

/// What a primitive header is for: packets of independent polygons, shared vertices of one
/// coordinate, or packets of the shared polygons.
enum class PrimitiveHeaderKind : std::uint8_t { independent, sharedVertices, shared };

/// One type of polygons that a primitive header lists.
struct TypeDescription {
    std::uint32_t offset = 0;            ///< of the type word; number and index stand behind it
    PrimitiveTypeCode type = 0;          ///< as it stands there
    std::uint32_t number = 0;            ///< of polygons, or of strips
    std::uint32_t packetOffset = 0;      ///< in words from the top of its packets
    std::optional<std::uint32_t> group;  ///< index of the packet group; nothing when it has none
};

/// The shared vertices or shared normals of one coordinate.
struct SharedRange {
    std::uint32_t number = 0;
    std::uint32_t source = 0;       ///< the first of them in the shared block
    std::uint32_t destination = 0;  ///< its twin in the calculated block
};

struct PrimitiveHeader {
    PrimitiveHeaderKind kind = PrimitiveHeaderKind::independent;
    std::uint32_t offset = 0;
    std::uint32_t words = 0;
    std::uint32_t firstDescription = 0;  ///< index into VxbFile::descriptions
    std::uint32_t descriptionNum = 0;
    SharedRange vertices;  ///< of a header of shared vertices
    SharedRange normals;
    std::optional<std::uint32_t> coordinate;  ///< whose block the header belongs to
};

/// The packets of one type that one or more descriptions name.
struct PacketGroup {
    bool shared = false;
    PrimitiveTypeCode code = 0;        ///< without the bit that marks the first header
    const PacketForm* form = nullptr;  ///< null when the code has none
    std::uint32_t number = 0;          ///< of polygons, or of strips
    std::uint32_t polygons = 0;        ///< those of the strips counted one by one
    std::uint32_t offset = 0;
    std::uint32_t words = 0;
    bool fits = true;  ///< whether number and form make as many words as there are
};

/// Vertices or normals that stand together, two words each.
struct PointBlock {
    std::uint32_t offset = 0;
    std::uint32_t number = 0;
};

struct PointSection {
    PointBlock independent;
    PointBlock shared;
    PointBlock calculated;
    bool known = false;  ///< whether the blocks could be told apart
};

/// The components of a vertex, or of a normal in units of 1/4096.
struct Point {
    std::int16_t x;
    std::int16_t y;
    std::int16_t z;
};

/// One animated coordinate of a motion.
struct AnimatedCoordinate {
    std::uint32_t offset = 0;
    std::uint32_t coordinate = 0;
    std::uint32_t startStep = 0;    ///< 65535 when it names none, or as the number of a step
    std::uint32_t sequenceNum = 0;  ///< sequence headers, which stand behind its first six words
};

struct Motion {
    std::uint32_t offset = 0;
    std::uint32_t firstCoordinate = 0;  ///< index into Animation::coordinates
    std::uint32_t coordinateNum = 0;
};

/// What a control word does, by its bits 30 and 31.
enum class ControlKind : std::uint8_t { keyFrame, unknown, jump, end };

/// A control word's fields; those that its kind does not have are meaningless.
struct ControlWord {
    ControlKind kind;
    std::uint32_t target;        ///< the step of a jump, or a key frame's offset in words
    std::uint32_t typeIndex;     ///< of a key frame
    std::uint32_t frameNumber;   ///< of a key frame
    std::uint32_t firstNumber;   ///< of a jump
    std::uint32_t secondNumber;  ///< of a jump, and the number of an end
};

constexpr ControlWord controlWord(std::uint32_t word) {
    return {static_cast<ControlKind>(word >> 30U),
            word & 0xFFFFU,
            word >> 24U & 0x3FU,
            word >> 16U & 0xFFU,
            word >> 23U & 0x7FU,
            word >> 16U & 0x7FU};
}

/// A place among the key frames that a control word names. The packet type index 0 also stands for
/// frames of the bare animation type, so the file cannot always tell the form.
struct KeyFrame {
    std::uint32_t offset = 0;  ///< in words from the top of the key frames
    std::uint32_t typeIndex = 0;
};

/// Position, size and data of an image's pixels or of its colour lookup table.
struct ImageBlock {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;  ///< in 16-bit units
    std::uint32_t height = 0;
    std::uint32_t offset = 0;  ///< of the data, in the file
    std::uint32_t words = 0;

    /// The format gives the word of width and height no meaning. They are the block's size only
    /// when they make as many words as there are.
    [[nodiscard]] bool sized() const {
        return words != 0 && (std::uint64_t{width} * height + 1) / 2 == words;
    }
};

struct Image {
    std::uint32_t offset = 0;  ///< of its entry
    ImageBlock pixels;
    std::optional<ImageBlock> clut;
};

/// The motions. Their types, control words and key frames stand together for all of them.
struct Animation {
    std::vector<Motion> motions;
    std::vector<AnimatedCoordinate> coordinates;
    std::vector<PrimitiveTypeCode> types;  ///< of key frames, by packet type index
    std::uint32_t controlOffset = 0;
    std::uint32_t controlNum = 0;
    std::uint32_t keyFrameOffset = 0;
    std::uint32_t keyFrameWords = 0;
    std::vector<KeyFrame> keyFrames;  ///< in ascending order, each once
};

struct VxbFile {
    std::vector<std::uint32_t> words;
    std::vector<Region> regions;
    Findings findings;

    std::vector<Coordinate> coordinates;
    std::array<std::optional<GlobalHeader>, globalHeaderNum> globalHeaders;
    std::vector<PrimitiveHeader> primitiveHeaders;
    std::vector<TypeDescription> descriptions;
    std::vector<PacketGroup> packetGroups;
    PointSection vertices;
    PointSection normals;
    Animation animation;
    std::vector<Image> images;

    [[nodiscard]] const std::optional<GlobalHeader>& globalHeader(GlobalHeaderKind kind) const {
        return globalHeaders[static_cast<std::size_t>(kind)];
    }
    /// Point `index` of a block.
    [[nodiscard]] Point point(const PointBlock& block, std::uint32_t index) const;
    /// The region that holds a word; null for an offset outside of the file.
    [[nodiscard]] const Region* regionAt(std::uint32_t offset) const;
    /// The sections in the order of the file, words of no section among them.
    [[nodiscard]] std::vector<SectionExtent> sections() const;
};

/// The form of the key frames at a packet type index; null when the index has none, or when it is
/// the 0 of a file without types.
const KeyFrameForm* keyFrameForm(const Animation& animation, std::uint32_t typeIndex);

/// Whether a key frame is of the form that its type index has, with so many words up to the next one that
/// is named. The index 0 also stands for the bare type, whose frames have one word.
bool hasListedForm(std::uint32_t typeIndex, const KeyFrameForm& form, std::size_t room);

}  // namespace mqf2vxb
