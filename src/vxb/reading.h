#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "vxb/vxb_file.h"

namespace mqf2vxb::reading {

/// A file while it is read: everything before the cursor belongs to a region.
class Reading {
public:
    explicit Reading(VxbFile& vxb) : file(vxb) {}

    VxbFile& file;
    std::uint32_t headersEnd = 0;  ///< where the primitive headers end
    /// Shared vertices and normals that the primitive headers name.
    std::uint32_t sharedVertices = 0;
    std::uint32_t sharedNormals = 0;
    /// Where the polygons' sections end: the start of the animation or images, or the file's end.
    std::uint32_t polygonsEnd = 0;
    /// Where the animation section ends and the image section starts.
    std::uint32_t imagesStart = 0;

    [[nodiscard]] std::uint32_t cursor() const { return cursor_; }
    [[nodiscard]] std::uint32_t end() const {
        return static_cast<std::uint32_t>(file.words.size());
    }
    /// The word at an offset; 0 behind the end.
    [[nodiscard]] std::uint32_t at(std::uint64_t offset) const {
        return offset < file.words.size() ? file.words[offset] : 0;
    }

    /// Makes the next words a region, no further than `limit`; reports when they do not fit. The
    /// region has as many words as fit, their number is returned.
    std::uint32_t take(Part part, std::uint32_t index, std::uint64_t words, std::string_view name,
                       std::uint32_t limit);
    std::uint32_t take(Part part, std::uint32_t index, std::uint64_t words, std::string_view name) {
        return take(part, index, words, name, end());
    }
    /// Moves on to an offset behind the cursor; the words between belong to nothing.
    void skipTo(std::uint32_t offset);

    void report(const FindingKind& kind, std::uint32_t offset, std::uint32_t found,
                std::optional<std::uint32_t> expected = {}, std::string_view word = {});

    void checkZero(std::uint32_t offset, std::string_view word);
    /// A word whose high half has to be 0.
    void checkHighZero(std::uint32_t offset, std::string_view word);
    /// An offset word that has to be `expected`, bit 31 included; an expected 0 means that there
    /// is nothing to name.
    void checkOffset(std::uint32_t offset, std::string_view word, std::uint32_t expected);
    /// The last "Next Primitive Pointer" of a chain.
    void checkChainEnd(std::uint32_t offset);
    /// A count word, with bit 31 or without, that should be `expected`.
    void checkCount(std::uint32_t offset, std::string_view word, std::uint32_t count,
                    std::uint32_t expected);
    void checkBit31(std::uint32_t offset, std::string_view word);

    /// The value of an offset word of a global header; nothing when the header or the offset is
    /// absent. Bit 31 is left out.
    [[nodiscard]] std::optional<std::uint32_t> top(GlobalHeaderKind kind, std::uint32_t word) const;
    /// Checks an offset word of a global header that should lead to `target`, or to nothing.
    void checkTop(GlobalHeaderKind kind, std::uint32_t word, std::optional<std::uint32_t> target);

private:
    std::uint32_t cursor_ = 0;
};

/// The name of a word of a global header, counted from its size word.
std::string_view globalHeaderWord(GlobalHeaderKind kind, std::uint32_t word);

// The sections, in the order of the file. Each function reads its section from the cursor on.

/// False when the rest of the file cannot be found from what stands there.
bool readFileHeader(Reading& r);
void readCoordinates(Reading& r);
void readGlobalHeaders(Reading& r);
void readPrimitiveHeaders(Reading& r);
/// Finds where the animation and the images begin; needs the cursor before them.
void findLaterSections(Reading& r);
void readPacketGroups(Reading& r);
void readPoints(Reading& r);
/// Connects the block table with the primitive headers; needs what is known of the points.
void readBlocks(Reading& r);
/// Checks every word of every packet.
void checkPackets(Reading& r);
void readAnimation(Reading& r);
void readImages(Reading& r);

}  // namespace mqf2vxb::reading
