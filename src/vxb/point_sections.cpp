// The vertex and normal sections. No word of the file counts their points: the offsets around the
// blocks tell how many there are.

#include <array>

#include "format/format.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

constexpr std::uint32_t pointWords = format::pointSize;

/// The shared block begins at `start` and has `words` words; the calculated block behind it has as
/// many, and ends the section.
struct SharedBlocks {
    std::uint32_t start = 0;
    std::uint32_t words = 0;

    [[nodiscard]] std::uint64_t end() const { return start + 2 * std::uint64_t{words}; }
};

/// What the file says about the shared blocks of one section, as far as it says it.
struct SharedPlaces {
    std::uint32_t from = 0;  ///< the section's start
    std::uint32_t to = 0;    ///< where it has to end at the latest
    std::optional<std::uint32_t> sharedTop;
    std::optional<std::uint32_t> calculatedTop;
    std::optional<std::uint32_t> end;
    std::uint32_t points = 0;  ///< that the primitive headers name

    [[nodiscard]] bool fits(const SharedBlocks& blocks) const {
        return blocks.start >= from && blocks.end() <= to;
    }
};

/// Three places at equal distances are taken as right. Otherwise the number of points that the
/// headers name is taken, from the start that two of the places agree on, or the first that fits.
std::optional<SharedBlocks> findSharedBlocks(const SharedPlaces& places) {
    if (places.sharedTop && places.calculatedTop && places.end) {
        const std::uint32_t a = *places.sharedTop;
        const std::uint32_t b = *places.calculatedTop;
        const std::uint32_t c = *places.end;
        if (a <= b && b <= c && b - a == c - b && (b - a) % pointWords == 0 &&
            places.fits({a, b - a})) {
            return SharedBlocks{a, b - a};
        }
    }
    if (places.points > (places.to - places.from) / pointWords) {
        return std::nullopt;
    }
    const std::uint32_t words = pointWords * places.points;
    const auto back = [](std::optional<std::uint32_t> place, std::uint64_t distance) {
        return place && *place >= distance
                   ? std::optional(static_cast<std::uint32_t>(*place - distance))
                   : std::nullopt;
    };
    const std::array<std::optional<std::uint32_t>, 3> starts{
        places.sharedTop, back(places.calculatedTop, words),
        back(places.end, 2 * std::uint64_t{words})};
    std::optional<SharedBlocks> first;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        if (starts[i] && places.fits({*starts[i], words})) {
            const SharedBlocks blocks{*starts[i], words};
            for (std::size_t j = i + 1; j < starts.size(); ++j) {
                if (starts[j] == starts[i]) {
                    return blocks;
                }
            }
            first = first ? first : blocks;
        }
    }
    return first;
}

/// Makes the words up to `end` a block of points.
PointBlock takeBlock(Reading& r, Part part, std::uint32_t end, std::string_view name) {
    PointBlock block{r.cursor(), 0};
    const std::uint32_t words = end > r.cursor() ? end - r.cursor() : 0;
    if (words % pointWords != 0) {
        r.report(finding::oddBlock, r.cursor(), words, {}, name);
    }
    block.number = words / pointWords;
    r.take(part, 0, words, name);
    return block;
}

struct SectionParts {
    Part independent;
    Part shared;
    Part calculated;
    std::string_view name;
};

void takeSection(Reading& r, PointSection& section, const SectionParts& parts,
                 const std::optional<SharedBlocks>& shared, std::uint32_t end) {
    section.independent = takeBlock(r, parts.independent, shared ? shared->start : end, parts.name);
    if (shared) {
        section.shared = takeBlock(r, parts.shared, shared->start + shared->words, parts.name);
        section.calculated =
            takeBlock(r, parts.calculated, static_cast<std::uint32_t>(shared->end()), parts.name);
    }
}

void checkPoints(Reading& r, const PointSection& section) {
    for (const PointBlock& block : {section.independent, section.shared}) {
        for (std::uint32_t i = 0; i < block.number; ++i) {
            r.checkHighZero(block.offset + pointWords * i + 1, "the half behind a point");
        }
    }
    for (std::uint32_t i = 0; i < pointWords * section.calculated.number; ++i) {
        r.checkZero(section.calculated.offset + i, "a word of a calculated block");
    }
}

constexpr GlobalHeaderKind independentHeader = GlobalHeaderKind::independent;
constexpr GlobalHeaderKind sharedHeader = GlobalHeaderKind::shared;
using namespace global_header;

bool hasHeader(const Reading& r, GlobalHeaderKind kind) {
    return r.file.globalHeader(kind).has_value();
}

/// Where the normals begin as the independent header says; without normals, where they would.
std::optional<std::uint32_t> namedNormalTop(const Reading& r) {
    if (!hasHeader(r, independentHeader)) {
        return std::nullopt;
    }
    const auto top = r.top(independentHeader, independentNormalTop);
    return top ? top : r.polygonsEnd;
}

/// Reads the vertices and gives the place of the normals behind them.
std::uint32_t readVertices(Reading& r) {
    const SectionParts parts{Part::independentVertices, Part::sharedVertices,
                             Part::calculatedVertices, "vertices"};
    const std::optional<std::uint32_t> normals = namedNormalTop(r);
    const std::uint32_t start = r.cursor();
    r.checkTop(independentHeader, independentVertexTop, start);

    std::optional<SharedBlocks> shared;
    std::uint32_t end = 0;
    if (hasHeader(r, sharedHeader)) {
        shared =
            findSharedBlocks({start, r.polygonsEnd, r.top(sharedHeader, sharedVertexTop),
                              r.top(sharedHeader, calculatedVertexTop), normals, r.sharedVertices});
        if (!shared) {
            r.report(finding::offsetOutside,
                     r.file.globalHeader(sharedHeader)->offset + sharedVertexTop,
                     r.at(r.file.globalHeader(sharedHeader)->offset + sharedVertexTop), {},
                     globalHeaderWord(sharedHeader, sharedVertexTop));
            return r.polygonsEnd;
        }
        end = static_cast<std::uint32_t>(shared->end());
        r.checkTop(sharedHeader, sharedVertexTop, shared->start);
        r.checkTop(sharedHeader, calculatedVertexTop, shared->start + shared->words);
    } else {
        end = normals.value_or(r.polygonsEnd);
        if (end < start || end > r.polygonsEnd || (end - start) % pointWords != 0) {
            const std::uint32_t place =
                r.file.globalHeader(independentHeader)->offset + independentNormalTop;
            r.report(finding::offsetOutside, place, r.at(place), {},
                     globalHeaderWord(independentHeader, independentNormalTop));
            r.take(parts.independent, 0, r.polygonsEnd - start, parts.name);
            return r.polygonsEnd;
        }
    }
    takeSection(r, r.file.vertices, parts, shared, end);
    r.file.vertices.known = true;
    return end;
}

void readNormals(Reading& r, std::uint32_t start) {
    const std::uint32_t end = r.polygonsEnd;
    std::optional<SharedBlocks> shared;
    if (hasHeader(r, sharedHeader)) {
        const auto top = r.top(sharedHeader, sharedNormalTop);
        const auto calculated = r.top(sharedHeader, calculatedNormalTop);
        if (top || calculated || r.sharedNormals > 0) {
            shared = findSharedBlocks({start, end, top, calculated, end, r.sharedNormals});
        }
        if (shared && shared->words == 0) {
            shared.reset();
        }
        using Place = std::optional<std::uint32_t>;
        r.checkTop(sharedHeader, sharedNormalTop, shared ? Place(shared->start) : Place());
        r.checkTop(sharedHeader, calculatedNormalTop,
                   shared ? Place(shared->start + shared->words) : Place());
    }
    const bool present = end > start;
    if (r.top(independentHeader, independentNormalTop) || present) {
        r.checkTop(independentHeader, independentNormalTop,
                   present ? std::optional(start) : std::nullopt);
    }
    takeSection(r, r.file.normals,
                {Part::independentNormals, Part::sharedNormals, Part::calculatedNormals, "normals"},
                shared, end);
    r.file.normals.known = true;
}

/// Every shared vertex belongs to a coordinate, and its header counts it. A coordinate with shared
/// normals only has no header, so normals may be left over.
void checkSharedTotals(Reading& r) {
    std::uint32_t last = 0;
    for (const PrimitiveHeader& header : r.file.primitiveHeaders) {
        last = header.kind == PrimitiveHeaderKind::sharedVertices ? header.offset : last;
    }
    if (last == 0) {
        return;
    }
    constexpr std::uint32_t vertexNumber = 5;
    const std::uint32_t vertices = r.file.vertices.shared.number;
    if (r.file.vertices.known && vertices != r.sharedVertices) {
        const std::uint32_t place = last + vertexNumber;
        r.report(finding::countDisagrees, place, r.at(place),
                 r.at(place) + vertices - r.sharedVertices, word_name::sharedVertexNumber);
    }
    const std::uint32_t normals = r.file.normals.shared.number;
    if (r.file.normals.known && normals < r.sharedNormals) {
        const std::uint32_t place = last + vertexNumber + 3;
        r.report(finding::countDisagrees, place, r.at(place),
                 r.at(place) + normals - r.sharedNormals, word_name::sharedNormalNumber);
    } else if (normals > r.sharedNormals) {
        r.report(finding::normalsUnowned, r.file.globalHeader(sharedHeader)->offset,
                 normals - r.sharedNormals);
    }
}

}  // namespace

void readPoints(Reading& r) {
    if (!hasHeader(r, independentHeader) && !hasHeader(r, sharedHeader)) {
        return;
    }
    const std::uint32_t normals = readVertices(r);
    if (r.file.vertices.known) {
        readNormals(r, normals);
    }
    checkPoints(r, r.file.vertices);
    checkPoints(r, r.file.normals);
    checkSharedTotals(r);
}

}  // namespace mqf2vxb::reading
