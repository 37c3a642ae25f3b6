#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/finding_kind.h"

namespace mqf2vxb {

/// All kinds of findings of the reader. In the text, {word} stands for the name of the word or part
/// that is to blame, {found} and {expected} for the values; ":x" after the name shows a value as a
/// hexadecimal word, ":o" as a word offset without bit 31.
inline constexpr std::array findingKinds{
    FindingKind{"VXB001", Severity::error,
                "the file's length of {found} bytes is no multiple of 4"},
    FindingKind{"VXB002", Severity::error,
                "the file is longer than offsets reach; only {found} words were read"},
    FindingKind{"VXB003", Severity::error,
                "the file ends inside {word}: {found} of its {expected} words are there"},
    FindingKind{"VXB004", Severity::error, "the ID is {found:x}, not {expected:x}"},
    FindingKind{"VXB005", Severity::error, "{word} is {found:x} and has to be 0"},
    FindingKind{"VXB006", Severity::error, "{word} is {found:x}: bit 31 has to be set"},
    FindingKind{"VXB007", Severity::error, "{word} is {found:x}: bit 31 must not be set"},
    FindingKind{"VXB008", Severity::error,
                "{word} is {found:x}: bit 23 has to mark the first of its kind"},
    FindingKind{"VXB009", Severity::error,
                "{word} is {found:x}: bit 23 marks only the first of its kind"},
    FindingKind{"VXB010", Severity::error, "{found} words from here on belong to no section"},
    FindingKind{"VXB011", Severity::error,
                "{word} leads to word {found:o}; what it names begins at word {expected:o}"},
    FindingKind{"VXB012", Severity::error,
                "{word} leads to word {found:o}, where what it names cannot stand"},
    FindingKind{"VXB013", Severity::error,
                "{word} is {found:x}; there is nothing for it to name, so it has to be 0"},
    FindingKind{"VXB014", Severity::error, "{word} leads back to word {found:o}: the chain loops"},
    FindingKind{"VXB015", Severity::error,
                "{word} is {found:x}; the chain ends here, so it has to be {expected:x}"},
    FindingKind{"VXB016", Severity::error,
                "{word} leads to word {found:o}, where no block can begin"},
    FindingKind{
        "VXB017", Severity::error,
        "{word} leads to the header at word {found:o}, which opens the block of coordinate {expected}"},
    FindingKind{
        "VXB018", Severity::warning,
        "{word} leads to word {found:o}: the coordinate has objects, but no primitive header"},
    FindingKind{"VXB019", Severity::warning, "no block leads to this primitive header"},
    FindingKind{"VXB020", Severity::error, "{word} is {found}; there are {expected}"},
    FindingKind{"VXB021", Severity::error,
                "{word} gives the size {found}; it has to be {expected}"},
    FindingKind{
        "VXB022", Severity::error,
        "the size {found} is that of no global header that can stand here; it cannot be read"},
    FindingKind{"VXB023", Severity::error, "{word} {found:x} is unknown or cannot stand here"},
    FindingKind{"VXB024", Severity::error, "{word} {found:x} is listed a second time"},
    FindingKind{"VXB025", Severity::error,
                "{word} is {found:x}; another description of the same packets has {expected:x}"},
    FindingKind{"VXB026", Severity::error,
                "{word} {found} leads into packets of another type, which end at {expected}"},
    FindingKind{"VXB027", Severity::error,
                "{word} {found} leads behind the packets, which end at {expected}"},
    FindingKind{"VXB028", Severity::error,
                "a strip of {found} polygons does not fit between the strip's neighbours"},
    FindingKind{"VXB029", Severity::error,
                "vertex index {found} is outside its block of {expected} vertices"},
    FindingKind{"VXB030", Severity::error,
                "normal index {found} is outside its block of {expected} normals"},
    FindingKind{"VXB031", Severity::error, "texture page {found:x} has bits that no page has"},
    FindingKind{"VXB032", Severity::error,
                "texture window word {found:x} does not begin with 0xe20"},
    FindingKind{
        "VXB033", Severity::error,
        "colour word {found:x} carries another drawing code than {expected:x} of its polygon"},
    FindingKind{"VXB034", Severity::error,
                "the second drawing packet has {found:x} where the first has {expected:x}"},
    FindingKind{"VXB035", Severity::error, "{word} have an odd number of words: {found}"},
    FindingKind{"VXB036", Severity::error, "{word} is {found}; it has to be {expected}"},
    FindingKind{"VXB037", Severity::warning,
                "{found} shared normals belong to no primitive header"},
    FindingKind{"VXB038", Severity::error,
                "{word} leads to word {found:o}, where no coordinate begins"},
    FindingKind{
        "VXB039", Severity::warning,
        "{word} leads to word {found:o}: the coordinate is its own ancestor, so that no walk from it ends at a root"},
    FindingKind{"VXB040", Severity::error, "{word} {found:x} is no coordinate's"},
    FindingKind{"VXB041", Severity::warning,
                "coordinate {found} is animated; there are {expected}"},
    FindingKind{"VXB042", Severity::warning,
                "the animated coordinate has no step to start with (65535)"},
    FindingKind{"VXB043", Severity::error, "{word} names step {found}; there are {expected}"},
    FindingKind{"VXB044", Severity::error, "control word {found:x} is of no known kind"},
    FindingKind{"VXB045", Severity::error,
                "packet type index {found} is outside the list of {expected} types"},
    FindingKind{"VXB046", Severity::error,
                "key-frame offset {found} is outside the {expected} words of key frames"},
    FindingKind{"VXB047", Severity::warning,
                "key-frame offset {found} leaves no whole key frame before the end at {expected}"},
    FindingKind{
        "VXB048", Severity::warning,
        "key-frame offset {found} leads into the key frame before, which ends at {expected}"},
    FindingKind{"VXB049", Severity::error,
                "{word} is {found}; it has to be from {expected} to the end of the data"},
    FindingKind{"VXB050", Severity::error, "the file cannot be read: {word}"},
    FindingKind{
        "VXB051", Severity::warning,
        "vertex index {found} is outside the block of {expected} vertices; the strip's packets do not tell whether its polygon is a line or a sprite, which may carry it"},
    FindingKind{
        "VXB052", Severity::warning,
        "normal index {found} is outside the block of {expected} normals; in a strip a polygon that is flat or unlit may carry it"},
};
static_assert(codesAscend(findingKinds));

namespace finding {

inline constexpr const FindingKind& unevenLength = findingKind(findingKinds, "VXB001");
inline constexpr const FindingKind& tooLong = findingKind(findingKinds, "VXB002");
inline constexpr const FindingKind& endsInside = findingKind(findingKinds, "VXB003");
inline constexpr const FindingKind& wrongId = findingKind(findingKinds, "VXB004");
inline constexpr const FindingKind& notZero = findingKind(findingKinds, "VXB005");
inline constexpr const FindingKind& bit31Missing = findingKind(findingKinds, "VXB006");
inline constexpr const FindingKind& bit31Set = findingKind(findingKinds, "VXB007");
inline constexpr const FindingKind& bit23Missing = findingKind(findingKinds, "VXB008");
inline constexpr const FindingKind& bit23Set = findingKind(findingKinds, "VXB009");
inline constexpr const FindingKind& nobodysWords = findingKind(findingKinds, "VXB010");
inline constexpr const FindingKind& offsetMisses = findingKind(findingKinds, "VXB011");
inline constexpr const FindingKind& offsetOutside = findingKind(findingKinds, "VXB012");
inline constexpr const FindingKind& offsetOfNothing = findingKind(findingKinds, "VXB013");
inline constexpr const FindingKind& chainLoops = findingKind(findingKinds, "VXB014");
inline constexpr const FindingKind& chainGoesOn = findingKind(findingKinds, "VXB015");
inline constexpr const FindingKind& blockMisses = findingKind(findingKinds, "VXB016");
inline constexpr const FindingKind& blockTwice = findingKind(findingKinds, "VXB017");
inline constexpr const FindingKind& blockDangles = findingKind(findingKinds, "VXB018");
inline constexpr const FindingKind& headerUnused = findingKind(findingKinds, "VXB019");
inline constexpr const FindingKind& countDisagrees = findingKind(findingKinds, "VXB020");
inline constexpr const FindingKind& sizeDisagrees = findingKind(findingKinds, "VXB021");
inline constexpr const FindingKind& unknownGlobalHeader = findingKind(findingKinds, "VXB022");
inline constexpr const FindingKind& unknownType = findingKind(findingKinds, "VXB023");
inline constexpr const FindingKind& typeTwice = findingKind(findingKinds, "VXB024");
inline constexpr const FindingKind& groupDisagrees = findingKind(findingKinds, "VXB025");
inline constexpr const FindingKind& groupOverlaps = findingKind(findingKinds, "VXB026");
inline constexpr const FindingKind& groupOutside = findingKind(findingKinds, "VXB027");
inline constexpr const FindingKind& stripDoesNotFit = findingKind(findingKinds, "VXB028");
inline constexpr const FindingKind& vertexOutside = findingKind(findingKinds, "VXB029");
inline constexpr const FindingKind& normalOutside = findingKind(findingKinds, "VXB030");
inline constexpr const FindingKind& wrongPage = findingKind(findingKinds, "VXB031");
inline constexpr const FindingKind& wrongWindow = findingKind(findingKinds, "VXB032");
inline constexpr const FindingKind& wrongDrawingCode = findingKind(findingKinds, "VXB033");
inline constexpr const FindingKind& imagesDiffer = findingKind(findingKinds, "VXB034");
inline constexpr const FindingKind& oddBlock = findingKind(findingKinds, "VXB035");
inline constexpr const FindingKind& wrongOffset = findingKind(findingKinds, "VXB036");
inline constexpr const FindingKind& normalsUnowned = findingKind(findingKinds, "VXB037");
inline constexpr const FindingKind& parentMisses = findingKind(findingKinds, "VXB038");
inline constexpr const FindingKind& parentLoops = findingKind(findingKinds, "VXB039");
inline constexpr const FindingKind& animatedMisses = findingKind(findingKinds, "VXB040");
inline constexpr const FindingKind& animatedOutside = findingKind(findingKinds, "VXB041");
inline constexpr const FindingKind& startUnresolved = findingKind(findingKinds, "VXB042");
inline constexpr const FindingKind& stepOutside = findingKind(findingKinds, "VXB043");
inline constexpr const FindingKind& unknownControl = findingKind(findingKinds, "VXB044");
inline constexpr const FindingKind& keyFrameTypeOutside = findingKind(findingKinds, "VXB045");
inline constexpr const FindingKind& keyFrameOutside = findingKind(findingKinds, "VXB046");
inline constexpr const FindingKind& keyFramePastEnd = findingKind(findingKinds, "VXB047");
inline constexpr const FindingKind& keyFramesOverlap = findingKind(findingKinds, "VXB048");
inline constexpr const FindingKind& imageOffset = findingKind(findingKinds, "VXB049");
/// Raised where files are opened, not by the reader of their bytes; {word} is the cause.
inline constexpr const FindingKind& unreadable = findingKind(findingKinds, "VXB050");
inline constexpr const FindingKind& stripVertexOutside = findingKind(findingKinds, "VXB051");
inline constexpr const FindingKind& stripNormalOutside = findingKind(findingKinds, "VXB052");

}  // namespace finding

/// One thing found in a file.
struct Finding {
    const FindingKind* kind;
    std::uint32_t offset;  ///< of the word to blame, in words from the file's first
    std::uint32_t found;
    std::optional<std::uint32_t> expected;
    std::string_view word;  ///< name of the word or part; empty when the text needs none

    /// The text of the kind with this finding's name and values, one line without its end.
    [[nodiscard]] std::string text() const;
    /// "word 17: error VXB012: text".
    [[nodiscard]] std::string line() const;
};

/// The findings on one file. Of each kind only the first are kept, the others are counted, so that
/// the list stays short whatever the file holds.
class Findings {
public:
    static constexpr std::size_t keptPerKind = 100;

    void add(const Finding& finding);
    /// Puts the kept findings into the order of the file.
    void sort();

    [[nodiscard]] std::span<const Finding> kept() const { return kept_; }
    /// How many findings of a kind were added, kept or not.
    [[nodiscard]] std::size_t count(const FindingKind& kind) const;
    [[nodiscard]] std::size_t count(Severity severity) const;

private:
    std::vector<Finding> kept_;
    std::array<std::size_t, findingKinds.size()> counts_{};  // by place in the catalogue
};

}  // namespace mqf2vxb
