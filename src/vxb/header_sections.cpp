// The file header, the block table, the coordinates and the global headers.

#include <algorithm>
#include <array>

#include "format/format.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

using format::bit31;

constexpr std::uint32_t blockNumberWord = 3;
constexpr std::uint32_t globalTopWord = 2;
constexpr std::uint32_t coordinateWords = format::coordinateSize;

/// The place of the global headers in a file with so many coordinates.
std::uint64_t globalTop(std::uint64_t coordinates) {
    const std::uint64_t blocksEnd = format::fileHeaderSize + coordinates + 2;
    return blocksEnd + (coordinates > 0 ? 1 + coordinateWords * coordinates : 0);
}

/// The number of coordinates of a file whose global headers begin at `top`.
std::optional<std::uint32_t> coordinatesBefore(std::uint32_t top) {
    const auto withoutCoordinates = static_cast<std::uint32_t>(globalTop(0));
    if (top == withoutCoordinates) {
        return 0;
    }
    constexpr std::uint32_t perCoordinate = coordinateWords + 1;
    const std::uint32_t first = withoutCoordinates + 1;
    if (top > first && (top - first) % perCoordinate == 0) {
        return (top - first) / perCoordinate;
    }
    return std::nullopt;
}

/// The number of coordinates stands in three words: the block number, the place of the global
/// headers and the count before the coordinates. Where the first two differ, the third decides.
std::uint32_t coordinateNumber(Reading& r) {
    const std::uint32_t blocks = r.at(blockNumberWord);
    const std::uint32_t top = r.at(globalTopWord);
    const std::uint32_t byBlocks = blocks >= 2 ? blocks - 2 : 0;
    const std::optional<std::uint32_t> byTop = coordinatesBefore(top);
    if (blocks >= 2 && top == globalTop(byBlocks)) {
        return byBlocks;
    }
    if (byTop && top < r.end() &&
        (blocks < 2 || *byTop == 0 || r.at(format::fileHeaderSize + *byTop + 2) == *byTop)) {
        r.report(finding::countDisagrees, blockNumberWord, blocks, *byTop + 2,
                 word_name::blockNumber);
        return *byTop;
    }
    if (blocks < 2) {
        r.report(finding::countDisagrees, blockNumberWord, blocks, 2, word_name::blockNumber);
    }
    const std::uint64_t expected = globalTop(byBlocks);
    if (expected < r.end()) {
        r.checkOffset(globalTopWord, word_name::primitiveGlobalHeaderTop,
                      static_cast<std::uint32_t>(expected));
    } else {
        r.report(finding::offsetOutside, globalTopWord, top, {},
                 word_name::primitiveGlobalHeaderTop);
    }
    return byBlocks;
}

std::int16_t half(std::uint32_t word, std::uint32_t index) {
    return static_cast<std::int16_t>(word >> (16U * index));
}

void readCoordinate(Reading& r, Coordinate& coordinate) {
    const std::uint32_t offset = coordinate.offset;
    constexpr std::uint32_t matrix = 1;
    constexpr std::uint32_t translation = 6;
    constexpr std::uint32_t extra = 17;
    for (std::uint32_t i = 0; i < coordinate.matrix.size(); ++i) {
        coordinate.matrix[i] = half(r.at(offset + matrix + i / 2), i % 2);
    }
    for (std::uint32_t i = 0; i < 3; ++i) {
        coordinate.translation[i] = static_cast<std::int32_t>(r.at(offset + translation + i));
        coordinate.extra[i] = half(r.at(offset + extra + i / 2), i % 2);
    }
    r.checkZero(offset, "the first word of a coordinate");
    r.checkHighZero(offset + matrix + 4, "the half behind a matrix");
    r.checkHighZero(offset + extra + 1, "the half behind a coordinate's extra values");
    for (std::uint32_t i = translation + 3; i < extra; ++i) {
        r.checkZero(offset + i, "a reserved word of a coordinate");
    }
}

void readParent(Reading& r, Coordinate& coordinate) {
    const std::uint32_t place = coordinate.offset + coordinateWords - 1;
    const std::uint32_t parent = r.at(place);
    if (parent == 0) {
        return;
    }
    const std::uint32_t first = r.file.coordinates.front().offset;
    const std::uint32_t index = (parent - first) / coordinateWords;
    if (parent < first || (parent - first) % coordinateWords != 0 ||
        index >= r.file.coordinates.size()) {
        r.report(finding::parentMisses, place, parent, {}, "the parent");
        return;
    }
    coordinate.parent = index;
    coordinate.namedParent = index;
}

/// Makes every coordinate that is its own ancestor a root, so that walks up the tree end.
void breakParentLoops(Reading& r) {
    std::vector<Coordinate>& coordinates = r.file.coordinates;
    std::vector<std::uint32_t> walk(coordinates.size(), 0);  // the walk that came by first
    for (std::uint32_t i = 0; i < coordinates.size(); ++i) {
        const std::uint32_t number = i + 1;
        std::uint32_t c = i;
        while (walk[c] == 0 && coordinates[c].parent) {
            walk[c] = number;
            const std::uint32_t parent = *coordinates[c].parent;
            if (walk[parent] == number) {
                const std::uint32_t place = coordinates[c].offset + coordinateWords - 1;
                r.report(finding::parentLoops, place, r.at(place), {}, "the parent");
                coordinates[c].parent.reset();
            } else {
                c = parent;
            }
        }
        walk[c] = number;
    }
}

/// Words of a global header without a Coordinate Top.
constexpr std::array<std::uint32_t, globalHeaderNum> baseWords{
    format::independentGlobalHeaderSize, format::sharedGlobalHeaderSize,
    format::animationGlobalHeaderSize, format::imageGlobalHeaderSize};

std::uint32_t coordinateTop(const Reading& r) {
    return r.file.coordinates.empty()
               ? 0
               : static_cast<std::uint32_t>(format::fileHeaderSize +
                                            format::blockNumber(r.file.coordinates.size()));
}

/// How many offset words, or zeros in their place, stand behind the size word at the cursor.
std::uint32_t topNumber(const Reading& r) {
    std::uint32_t number = 0;
    for (std::uint64_t i = std::uint64_t{r.cursor()} + 1; i < r.end(); ++i, ++number) {
        const std::uint32_t word = r.at(i);
        if (word != 0 && ((word & bit31) == 0 || (word & ~bit31) > r.end())) {
            break;
        }
    }
    return number;
}

std::optional<GlobalHeaderKind> kindOfSize(std::uint32_t size) {
    switch (size) {
    case 2: return GlobalHeaderKind::image;
    case 3:
    case 4: return GlobalHeaderKind::independent;
    case 5:
    case 6: return GlobalHeaderKind::shared;
    default: return std::nullopt;
    }
}

/// The kind of the global header at the cursor, at or behind kind `next`: its size tells, and the
/// animation's size stands twice. When it is no such header's size, the offsets behind it do.
std::optional<GlobalHeaderKind> globalHeaderKind(const Reading& r, std::size_t next) {
    const std::uint32_t size = r.at(r.cursor());
    const std::uint32_t second = r.at(std::uint64_t{r.cursor()} + 1);
    const auto possible = [&](std::optional<GlobalHeaderKind> kind) {
        return kind && static_cast<std::size_t>(*kind) >= next;
    };
    const bool sizeTwice = (size == 4 || size == 5) && second != 0 && (second & bit31) == 0;
    if ((sizeTwice || second == 4 || second == 5) && possible(GlobalHeaderKind::animation)) {
        return GlobalHeaderKind::animation;
    }
    // Behind a header, no word but the end of a chain has bit 31.
    const std::uint32_t behind = r.at(std::uint64_t{r.cursor()} + 1 + size);
    const bool sizeFits = (behind & bit31) == 0 || behind == format::endOfChain;
    const auto bySize = kindOfSize(size);
    const auto byTops = kindOfSize(topNumber(r));
    if (possible(bySize) && (sizeFits || !possible(byTops))) {
        return bySize;
    }
    if (possible(byTops)) {
        return byTops;
    }
    if ((size == 4 || size == 5) && possible(GlobalHeaderKind::animation)) {
        return GlobalHeaderKind::animation;
    }
    return std::nullopt;
}

/// The words of the global header at the cursor. A Coordinate Top belongs to it when its size says
/// so, and a word that is exactly that offset belongs to it whatever the size says.
std::uint32_t globalHeaderWords(const Reading& r, GlobalHeaderKind kind) {
    const std::uint32_t base = baseWords[static_cast<std::size_t>(kind)];
    const std::uint32_t behind = r.at(std::uint64_t{r.cursor()} + base);
    if (kind == GlobalHeaderKind::animation) {
        const bool withTop = r.at(r.cursor()) == base || r.at(r.cursor() + 1) == base;
        return withTop ? base + 1 : base;
    }
    const bool named = r.at(r.cursor()) == base &&  // the size leaves its own word out
                       (behind & bit31) != 0 && behind != format::endOfChain;
    const bool exact = behind == (coordinateTop(r) | bit31);
    return kind != GlobalHeaderKind::image && (named || exact) ? base + 1 : base;
}

void readGlobalHeader(Reading& r, GlobalHeaderKind kind) {
    const std::uint32_t offset = r.cursor();
    const std::uint32_t base = baseWords[static_cast<std::size_t>(kind)];
    const std::uint32_t words = globalHeaderWords(r, kind);
    const auto check = [&](std::uint32_t word) {
        if (r.at(offset + word) != words - 1) {
            r.report(finding::sizeDisagrees, offset + word, r.at(offset + word), words - 1,
                     globalHeaderWord(kind, word));
        }
    };
    check(0);
    if (kind == GlobalHeaderKind::animation) {
        check(1);
    }
    r.file.globalHeaders[static_cast<std::size_t>(kind)] =
        GlobalHeader{offset, r.take(Part::globalHeader, static_cast<std::uint32_t>(kind), words,
                                    "a global header")};
    if (words > base && offset + words <= r.end()) {
        // The animation's header has the word without coordinates too.
        const std::uint32_t top = coordinateTop(r);
        if (top != 0 || kind != GlobalHeaderKind::animation) {
            r.checkTop(kind, base, top != 0 ? std::optional(top) : std::nullopt);
        } else if (r.at(offset + base) != bit31) {
            r.report(finding::offsetOfNothing, offset + base, r.at(offset + base), bit31,
                     globalHeaderWord(kind, base));
        }
    }
}

}  // namespace

std::string_view globalHeaderWord(GlobalHeaderKind kind, std::uint32_t word) {
    static constexpr std::array<std::array<std::string_view, 7>, globalHeaderNum> names{{
        {"Independent Primitive Global Header Size", "Independent Primitive Top",
         "Independent Vertex Top", "Independent Normal Top", word_name::coordinateTop, "", ""},
        {"Shared Primitive Global Header Size", "Shared Primitive Top", "Shared Vertex Top",
         "Calculated Shared Vertex Top", "Shared Normal Top", "Calculated Shared Normal Top",
         word_name::coordinateTop},
        {word_name::animationPrimitiveGlobalHeaderSize,
         word_name::animationPrimitiveGlobalHeaderSize, "Complement Function Top", "Control Top",
         "Matrix Top", word_name::coordinateTop, ""},
        {"Image Primitive Global Header Size", "Image Top", "Clut Top", "", "", "", ""},
    }};
    const auto& words = names[static_cast<std::size_t>(kind)];
    return word < words.size() ? words[word] : std::string_view();
}

bool readFileHeader(Reading& r) {
    if (r.take(Part::fileHeader, 0, format::fileHeaderSize, "the file header") <
        format::fileHeaderSize) {
        return false;
    }
    if (r.at(0) != format::fileId) {
        r.report(finding::wrongId, 0, r.at(0), format::fileId);
    }
    r.checkZero(1, "Flag");
    const std::uint32_t coordinates = coordinateNumber(r);
    const std::uint64_t blocks = std::uint64_t{coordinates} + 2;
    if (r.take(Part::blockTable, 0, blocks, "the block table") < blocks) {
        return false;
    }
    const std::uint64_t words = coordinates > 0 ? globalTop(coordinates) - r.cursor() : 0;
    if (words > r.end() - r.cursor()) {
        r.report(finding::endsInside, r.cursor(), r.end() - r.cursor(),
                 static_cast<std::uint32_t>(std::min<std::uint64_t>(words, UINT32_MAX)),
                 "the coordinate section");
        return false;
    }
    r.file.coordinates.resize(coordinates);
    return true;
}

void readCoordinates(Reading& r) {
    std::vector<Coordinate>& coordinates = r.file.coordinates;
    if (coordinates.empty()) {
        return;
    }
    r.checkCount(r.cursor(), word_name::coordinateNumber, r.at(r.cursor()),
                 static_cast<std::uint32_t>(coordinates.size()));
    r.take(Part::coordinateNumber, 0, 1, "the coordinate section");
    std::uint32_t index = 0;
    for (Coordinate& coordinate : coordinates) {
        coordinate.offset = r.cursor();
        r.take(Part::coordinate, index++, coordinateWords, "a coordinate");
        readCoordinate(r, coordinate);
    }
    for (Coordinate& coordinate : coordinates) {
        readParent(r, coordinate);
    }
    breakParentLoops(r);
}

void readGlobalHeaders(Reading& r) {
    const std::uint32_t numberWord = r.cursor();
    if (r.take(Part::globalHeaderNumber, 0, format::globalHeaderNumberSize, "the global headers") ==
        0) {
        return;
    }
    // A word behind the headers is never as small as a size, so they can be counted.
    std::uint32_t number = 0;
    std::size_t next = 0;
    while (r.cursor() < r.end()) {
        const std::optional<GlobalHeaderKind> kind = globalHeaderKind(r, next);
        if (!kind) {
            break;
        }
        next = static_cast<std::size_t>(*kind) + 1;
        readGlobalHeader(r, *kind);
        ++number;
    }
    if (number < r.at(numberWord) && (r.at(std::uint64_t{r.cursor()} + 1) & bit31) != 0) {
        r.report(finding::unknownGlobalHeader, r.cursor(), r.at(r.cursor()));
        return;
    }
    r.checkCount(numberWord, word_name::primitiveGlobalHeaderNumber, r.at(numberWord), number);
}

}  // namespace mqf2vxb::reading
