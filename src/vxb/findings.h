#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mqf2vxb {

enum class Severity : std::uint8_t {
    warning,  ///< the format lets it stand, and it is surely not meant
    error,    ///< the file is not sound
};

/// One kind of finding of the catalogue. In the text, {word} stands for the name of the word or
/// part that is to blame, {found} and {expected} for the values; ":x" after the name shows a value
/// as a hexadecimal word, ":o" as a word offset without bit 31.
struct FindingKind {
    std::uint8_t number;  ///< never given to another kind
    Severity severity;
    std::string_view text;

    /// The stable code, for instance "VXB012".
    [[nodiscard]] std::string code() const;
};

/// The catalogue.
namespace finding {

inline constexpr FindingKind unevenLength{1, Severity::error,
                                          "the file's length of {found} bytes is no multiple of 4"};
inline constexpr FindingKind tooLong{
    2, Severity::error, "the file is longer than offsets reach; only {found} words were read"};
inline constexpr FindingKind endsInside{
    3, Severity::error, "the file ends inside {word}: {found} of its {expected} words are there"};
inline constexpr FindingKind wrongId{4, Severity::error, "the ID is {found:x}, not {expected:x}"};
inline constexpr FindingKind notZero{5, Severity::error, "{word} is {found:x} and has to be 0"};
inline constexpr FindingKind bit31Missing{6, Severity::error,
                                          "{word} is {found:x}: bit 31 has to be set"};
inline constexpr FindingKind bit31Set{7, Severity::error,
                                      "{word} is {found:x}: bit 31 must not be set"};
inline constexpr FindingKind bit23Missing{
    8, Severity::error, "{word} is {found:x}: bit 23 has to mark the first of its kind"};
inline constexpr FindingKind bit23Set{
    9, Severity::error, "{word} is {found:x}: bit 23 marks only the first of its kind"};
inline constexpr FindingKind nobodysWords{10, Severity::error,
                                          "{found} words from here on belong to no section"};

inline constexpr FindingKind offsetMisses{
    11, Severity::error,
    "{word} leads to word {found:o}; what it names begins at word {expected:o}"};
inline constexpr FindingKind offsetOutside{
    12, Severity::error, "{word} leads to word {found:o}, where what it names cannot stand"};
inline constexpr FindingKind offsetOfNothing{
    13, Severity::error, "{word} is {found:x}; there is nothing for it to name, so it has to be 0"};
inline constexpr FindingKind chainLoops{14, Severity::error,
                                        "{word} leads back to word {found:o}: the chain loops"};
inline constexpr FindingKind chainGoesOn{
    15, Severity::error, "{word} is {found:x}; the chain ends here, so it has to be {expected:x}"};
inline constexpr FindingKind blockMisses{
    16, Severity::error, "{word} leads to word {found:o}, where no block can begin"};
inline constexpr FindingKind blockTwice{
    17, Severity::error,
    "{word} leads to the header at word {found:o}, which opens the block of coordinate {expected}"};
inline constexpr FindingKind blockDangles{
    18, Severity::warning,
    "{word} leads to word {found:o}: the coordinate has objects, but no primitive header"};
inline constexpr FindingKind headerUnused{19, Severity::warning,
                                          "no block leads to this primitive header"};

inline constexpr FindingKind countDisagrees{20, Severity::error,
                                            "{word} is {found}; there are {expected}"};
inline constexpr FindingKind sizeDisagrees{
    21, Severity::error, "{word} gives the size {found}; it has to be {expected}"};
inline constexpr FindingKind unknownGlobalHeader{
    22, Severity::error,
    "the size {found} is that of no global header that can stand here; it cannot be read"};
inline constexpr FindingKind unknownType{23, Severity::error,
                                         "{word} {found:x} is unknown or cannot stand here"};
inline constexpr FindingKind typeTwice{24, Severity::error,
                                       "{word} {found:x} is listed a second time"};

inline constexpr FindingKind groupDisagrees{
    25, Severity::error,
    "{word} is {found:x}; another description of the same packets has {expected:x}"};
inline constexpr FindingKind groupOverlaps{
    26, Severity::error,
    "{word} {found} leads into packets of another type, which end at {expected}"};
inline constexpr FindingKind groupOutside{
    27, Severity::error, "{word} {found} leads behind the packets, which end at {expected}"};
inline constexpr FindingKind stripDoesNotFit{
    28, Severity::error, "a strip of {found} polygons does not fit between the strip's neighbours"};
inline constexpr FindingKind vertexOutside{
    29, Severity::error, "vertex index {found} is outside its block of {expected} vertices"};
inline constexpr FindingKind normalOutside{
    30, Severity::error, "normal index {found} is outside its block of {expected} normals"};
inline constexpr FindingKind wrongPage{31, Severity::error,
                                       "texture page {found:x} has bits that no page has"};
inline constexpr FindingKind wrongWindow{32, Severity::error,
                                         "texture window word {found:x} does not begin with 0xe20"};
inline constexpr FindingKind wrongDrawingCode{
    33, Severity::error,
    "colour word {found:x} carries another drawing code than {expected:x} of its polygon"};
inline constexpr FindingKind imagesDiffer{
    34, Severity::error,
    "the second drawing packet has {found:x} where the first has {expected:x}"};

inline constexpr FindingKind oddBlock{35, Severity::error,
                                      "{word} have an odd number of words: {found}"};
inline constexpr FindingKind wrongOffset{36, Severity::error,
                                         "{word} is {found}; it has to be {expected}"};
inline constexpr FindingKind normalsUnowned{37, Severity::warning,
                                            "{found} shared normals belong to no primitive header"};

inline constexpr FindingKind parentMisses{
    38, Severity::error, "{word} leads to word {found:o}, where no coordinate begins"};
inline constexpr FindingKind parentLoops{
    39, Severity::warning,
    "{word} leads to word {found:o}: the coordinate is its own ancestor, so that no walk from it "
    "ends at a root"};

inline constexpr FindingKind animatedMisses{40, Severity::error,
                                            "{word} {found:x} is no coordinate's"};
inline constexpr FindingKind animatedOutside{
    41, Severity::warning, "coordinate {found} is animated; there are {expected}"};
inline constexpr FindingKind startUnresolved{
    42, Severity::warning, "the animated coordinate has no step to start with (65535)"};
inline constexpr FindingKind stepOutside{43, Severity::error,
                                         "{word} names step {found}; there are {expected}"};
inline constexpr FindingKind unknownControl{44, Severity::error,
                                            "control word {found:x} is of no known kind"};
inline constexpr FindingKind keyFrameTypeOutside{
    45, Severity::error, "packet type index {found} is outside the list of {expected} types"};
inline constexpr FindingKind keyFrameOutside{
    46, Severity::error, "key-frame offset {found} is outside the {expected} words of key frames"};
inline constexpr FindingKind keyFramePastEnd{
    47, Severity::warning,
    "key-frame offset {found} leaves no whole key frame before the end at {expected}"};
inline constexpr FindingKind keyFramesOverlap{
    48, Severity::warning,
    "key-frame offset {found} leads into the key frame before, which ends at {expected}"};

inline constexpr FindingKind imageOffset{
    49, Severity::error, "{word} is {found}; it has to be from {expected} to the end of the data"};
inline constexpr FindingKind stripVertexOutside{
    51, Severity::warning,
    "vertex index {found} is outside the block of {expected} vertices; the strip's packets do not "
    "tell whether its polygon is a line or a sprite, which may carry it"};
inline constexpr FindingKind stripNormalOutside{
    52, Severity::warning,
    "normal index {found} is outside the block of {expected} normals; in a strip a polygon that is "
    "flat or unlit may carry it"};
/// Raised by who reads files, not by the reader of their bytes; {word} is the cause.
inline constexpr FindingKind unreadable{50, Severity::error, "the file cannot be read: {word}"};

}  // namespace finding

/// All kinds of findings, in the order of their numbers.
std::span<const FindingKind* const> findingKinds();
inline constexpr std::size_t findingKindNum = 52;

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
    std::array<std::size_t, findingKindNum + 1> counts_{};
};

}  // namespace mqf2vxb
