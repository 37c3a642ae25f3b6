// The primitive headers and the block table that leads to them.

#include <algorithm>

#include "format/format.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

using format::bit31;

constexpr std::uint32_t headWords = format::primitiveHeaderSize;
constexpr std::uint32_t descriptionWords = format::typeDescriptionSize;

bool pointsAt(const Reading& r, std::uint64_t word, GlobalHeaderKind kind) {
    const std::optional<GlobalHeader>& header = r.file.globalHeader(kind);
    return header && r.at(word) == header->offset;
}

/// Whether the words at an offset can be a type description, by its size.
bool looksLikeDescription(const Reading& r, std::uint64_t offset) {
    const std::uint32_t size = r.at(offset + 1);
    return offset + descriptionWords <= r.end() && (size & bit31) != 0 &&
           (size & format::largestSize) == format::typeDescriptionRest;
}

/// How many of the three marks of a primitive header the words at an offset carry. A header with one
/// damaged word still has two.
int headerMarks(const Reading& r, std::uint64_t offset) {
    if (offset + headWords + descriptionWords > r.end()) {
        return 0;
    }
    const bool pointer = pointsAt(r, offset + 1, GlobalHeaderKind::independent) ||
                         pointsAt(r, offset + 1, GlobalHeaderKind::shared);
    const std::uint32_t number = r.at(offset + 2) & ~bit31;
    const bool types =
        r.at(offset + 2) != number && number > 0 && number <= r.end() / descriptionWords;
    const bool description = looksLikeDescription(r, offset + headWords) ||
                             r.at(offset + headWords + 1) == (bit31 | format::sharedVertexRest);
    return static_cast<int>(pointer) + static_cast<int>(types) + static_cast<int>(description);
}

/// Where the packets begin, as the file says.
std::uint32_t packetTop(const Reading& r) {
    const auto shared = r.top(GlobalHeaderKind::shared, global_header::sharedPrimitiveTop);
    return r.top(GlobalHeaderKind::independent, global_header::independentPrimitiveTop)
        .value_or(shared.value_or(0));
}

/// Two of the marks make a header; where the packets are said to begin, it takes all three.
bool looksLikeHeader(const Reading& r, std::uint64_t offset) {
    return headerMarks(r, offset) >= (offset == packetTop(r) ? 3 : 2);
}

PrimitiveHeaderKind headerKind(const Reading& r, std::uint32_t offset) {
    const PrimitiveTypeCode type = r.at(offset + headWords) & ~type_code::first;
    const bool vertices = type == type_code::sharedVertex ||
                          r.at(offset + headWords + 1) == (bit31 | format::sharedVertexRest);
    if (pointsAt(r, offset + 1, GlobalHeaderKind::independent)) {
        return PrimitiveHeaderKind::independent;
    }
    if (vertices) {
        return PrimitiveHeaderKind::sharedVertices;
    }
    const bool shared =
        pointsAt(r, offset + 1, GlobalHeaderKind::shared) || (type & type_code::shared) != 0;
    return shared ? PrimitiveHeaderKind::shared : PrimitiveHeaderKind::independent;
}

/// The number of type descriptions that stand behind a header's first words. The header's own
/// number holds unless the words before or behind its last description tell otherwise.
std::uint32_t descriptionNumber(const Reading& r, std::uint32_t offset) {
    const std::uint32_t named = r.at(offset + 2) & ~bit31;
    std::uint32_t number = 0;
    std::uint64_t place = std::uint64_t{offset} + headWords;
    for (; place + descriptionWords <= r.end(); place += descriptionWords, ++number) {
        const bool looks = looksLikeDescription(r, place);
        const bool atPackets = place == packetTop(r);
        const bool behindLast = number >= named ? !looks || atPackets : !looks && atPackets;
        // One damaged description is passed over; two in a row end the list.
        const bool tooMany = number < named && !looks && number + 1 < named &&
                             !looksLikeDescription(r, place + descriptionWords);
        if (number > 0 && (behindLast || tooMany || (!looks && looksLikeHeader(r, place)))) {
            break;
        }
    }
    return number;
}

void checkNumberAndSize(Reading& r, std::uint32_t offset, std::uint32_t size) {
    const std::uint32_t word = r.at(offset);
    r.checkBit31(offset, word_name::polygonNumberSize);
    if ((word & format::largestSize) != size) {
        r.report(finding::sizeDisagrees, offset, word & format::largestSize, size,
                 word_name::polygonNumberSize);
    }
}

void readDescriptions(Reading& r, PrimitiveHeader& header) {
    const bool shared = header.kind == PrimitiveHeaderKind::shared;
    header.firstDescription = static_cast<std::uint32_t>(r.file.descriptions.size());
    for (std::uint32_t offset = header.offset + headWords;
         offset + descriptionWords <= header.offset + header.words; offset += descriptionWords) {
        TypeDescription description;
        description.offset = offset;
        description.type = r.at(offset);
        description.number = r.at(offset + 1) >> 16U & format::largestNumber;
        description.packetOffset = r.at(offset + 2);
        const bool sharedType = (description.type & type_code::shared) != 0;
        if (findPacketForm(description.type & ~type_code::first) == nullptr ||
            shared != sharedType) {
            r.report(finding::unknownType, offset, description.type, {}, word_name::type);
        }
        checkNumberAndSize(r, offset + 1, format::typeDescriptionRest);
        r.file.descriptions.push_back(description);
        ++header.descriptionNum;
    }
}

void checkRange(Reading& r, std::uint32_t offset, const SharedRange& range, std::uint32_t source,
                std::string_view sourceName, std::string_view destinationName) {
    if (range.source != source) {
        r.report(finding::wrongOffset, offset + 1, range.source, source, sourceName);
    }
    if (range.destination != source) {
        r.report(finding::wrongOffset, offset + 2, range.destination, source, destinationName);
    }
}

/// Where the shared vertices and normals of the next header begin.
struct SharedSums {
    std::uint32_t vertices = 0;
    std::uint32_t normals = 0;
    std::uint32_t numberWord = 0;  ///< of the header before; 0 when there is none
};

/// The offsets of a header go on where the header before ended. Two offsets that agree are right,
/// and the number before them is wrong.
void checkSharedVertices(Reading& r, const PrimitiveHeader& header, SharedSums& sums) {
    constexpr std::uint32_t firstWord = 5;
    const std::uint32_t offset = header.offset + firstWord;
    const std::uint32_t before = sums.numberWord;
    if (header.vertices.source != sums.vertices && before != 0 &&
        header.vertices.source == header.vertices.destination) {
        const std::uint32_t found = r.at(before);
        const std::uint32_t real = found + header.vertices.source - sums.vertices;
        r.checkCount(before, word_name::sharedVertexNumber, found, real);
        sums.vertices = header.vertices.source;
    }
    checkRange(r, offset, header.vertices, sums.vertices, word_name::sharedVertexSource,
               word_name::sharedVertexDestination);
    sums.vertices += header.vertices.number;
    sums.numberWord = offset;

    // Normals of a coordinate without a header of its own leave a gap, so these may begin later.
    std::uint32_t normals = header.normals.source;
    if (normals != header.normals.destination) {
        normals = sums.normals;
    } else if (normals < sums.normals && before != 0) {
        const std::uint32_t found = r.at(before + 3);
        r.checkCount(before + 3, word_name::sharedNormalNumber, found,
                     found + normals - sums.normals);
    } else if (normals > sums.normals) {
        r.report(finding::normalsUnowned, offset + 4, normals - sums.normals);
    }
    checkRange(r, offset + 3, header.normals, normals, word_name::sharedNormalSource,
               word_name::sharedNormalDestination);
    sums.normals = normals + header.normals.number;
}

void readSharedVertices(Reading& r, PrimitiveHeader& header, SharedSums& sums) {
    const std::uint32_t offset = header.offset;
    r.checkCount(offset + 2, word_name::typeNumber, r.at(offset + 2) & ~bit31, 1);
    if ((r.at(offset + 3) & ~type_code::first) != type_code::sharedVertex) {
        r.report(finding::unknownType, offset + 3, r.at(offset + 3), {}, word_name::type);
    }
    checkNumberAndSize(r, offset + 4, format::sharedVertexRest);
    r.checkCount(offset + 4, word_name::polygonNumberSize,
                 r.at(offset + 4) >> 16U & format::largestNumber, 0);
    header.vertices = {r.at(offset + 5), r.at(offset + 6), r.at(offset + 7)};
    header.normals = {r.at(offset + 8), r.at(offset + 9), r.at(offset + 10)};
    checkSharedVertices(r, header, sums);
}

void readHeader(Reading& r, SharedSums& sums) {
    PrimitiveHeader header;
    header.offset = r.cursor();
    header.kind = headerKind(r, header.offset);
    const bool vertices = header.kind == PrimitiveHeaderKind::sharedVertices;
    const std::uint32_t number = vertices ? 1 : descriptionNumber(r, header.offset);
    header.words =
        r.take(Part::primitiveHeader, static_cast<std::uint32_t>(r.file.primitiveHeaders.size()),
               vertices ? format::sharedVertexHeaderSize : format::typesHeaderSize(number),
               "a primitive header");
    const bool independent = header.kind == PrimitiveHeaderKind::independent;
    const GlobalHeaderKind globalKind =
        independent ? GlobalHeaderKind::independent : GlobalHeaderKind::shared;
    if (const std::optional<GlobalHeader>& global = r.file.globalHeader(globalKind)) {
        r.checkOffset(header.offset + 1,
                      independent ? word_name::independentPrimitiveGlobalHeaderPointer
                                  : word_name::sharedPrimitiveGlobalHeaderPointer,
                      global->offset);
    } else {
        r.report(finding::offsetOutside, header.offset + 1, r.at(header.offset + 1), {},
                 "the global header pointer");
    }
    r.checkBit31(header.offset + 2, word_name::typeNumber);
    if (vertices) {
        readSharedVertices(r, header, sums);
    } else {
        r.checkCount(header.offset + 2, word_name::typeNumber, r.at(header.offset + 2) & ~bit31,
                     number);
        readDescriptions(r, header);
    }
    r.file.primitiveHeaders.push_back(header);
}

/// An independent header may lead to the header of shared vertices right behind it; every other
/// header ends its chain.
void checkChain(Reading& r, std::size_t index) {
    const std::vector<PrimitiveHeader>& headers = r.file.primitiveHeaders;
    const PrimitiveHeader& header = headers[index];
    const std::uint32_t next = r.at(header.offset);
    const bool mayGoOn = header.kind == PrimitiveHeaderKind::independent &&
                         index + 1 < headers.size() &&
                         headers[index + 1].kind == PrimitiveHeaderKind::sharedVertices;
    if (next == format::endOfChain || (mayGoOn && next == headers[index + 1].offset)) {
        return;
    }
    if (mayGoOn && next > header.offset) {
        r.checkOffset(header.offset, word_name::nextPrimitivePointer, headers[index + 1].offset);
    } else {
        r.checkChainEnd(header.offset);
    }
}

/// The headers of coordinates come first, the one of the shared polygons last.
std::size_t coordinateHeaders(const VxbFile& file) {
    const std::vector<PrimitiveHeader>& headers = file.primitiveHeaders;
    const bool shared = !headers.empty() && headers.back().kind == PrimitiveHeaderKind::shared;
    return headers.size() - (shared ? 1 : 0);
}

}  // namespace

void readPrimitiveHeaders(Reading& r) {
    r.headersEnd = r.cursor();
    if (!r.file.globalHeader(GlobalHeaderKind::independent) &&
        !r.file.globalHeader(GlobalHeaderKind::shared)) {
        return;
    }
    SharedSums sums;
    while (looksLikeHeader(r, r.cursor())) {
        readHeader(r, sums);
    }
    for (std::size_t i = 0; i < r.file.primitiveHeaders.size(); ++i) {
        checkChain(r, i);
        if (r.file.primitiveHeaders[i].kind == PrimitiveHeaderKind::shared &&
            i + 1 < r.file.primitiveHeaders.size()) {
            r.report(finding::unknownType, r.file.primitiveHeaders[i].offset + headWords,
                     r.at(r.file.primitiveHeaders[i].offset + headWords), {},
                     "the type of a header before the last");
        }
    }
    // The packets follow. Without independent polygons the shared ones come first.
    if (r.file.globalHeader(GlobalHeaderKind::independent)) {
        r.checkTop(GlobalHeaderKind::independent, global_header::independentPrimitiveTop,
                   r.cursor());
    } else {
        r.checkTop(GlobalHeaderKind::shared, global_header::sharedPrimitiveTop, r.cursor());
    }
    if (r.file.primitiveHeaders.empty()) {
        r.skipTo(packetTop(r));
    }
    r.headersEnd = r.cursor();
    r.sharedVertices = sums.vertices;
    r.sharedNormals = sums.normals;
}

namespace {

constexpr std::uint32_t firstCoordinateBlock = 5;
constexpr std::string_view blockName = "a Coordinate Primitive Top";

/// What the block table and the headers say about the first coordinate with objects.
struct FirstObject {
    bool exists = false;
    std::optional<std::uint32_t> header;
};

std::optional<std::uint32_t> headerAt(const VxbFile& file, std::uint32_t offset) {
    const auto found =
        std::lower_bound(file.primitiveHeaders.begin(), file.primitiveHeaders.end(), offset,
                         [](const PrimitiveHeader& h, std::uint32_t o) { return h.offset < o; });
    if (found == file.primitiveHeaders.end() || found->offset != offset) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(found - file.primitiveHeaders.begin());
}

/// Whether a coordinate may have a header that takes no words: one with shared normals only. Its
/// block word leads to whatever comes next, and the normals belong to no header.
bool wordlessEntries(const VxbFile& file) {
    return file.findings.count(finding::normalsUnowned) > 0;
}

void readCoordinateBlock(Reading& r, std::uint32_t coordinate, std::uint32_t headersEnd) {
    VxbFile& file = r.file;
    const std::uint32_t place = firstCoordinateBlock + coordinate;
    std::uint32_t word = r.at(place);
    if (word == 0) {
        return;
    }
    if ((word & bit31) != 0) {
        r.report(finding::bit31Set, place, word, word & ~bit31, blockName);
        word &= ~bit31;
    }
    const std::optional<std::uint32_t> header = headerAt(file, word);
    if (word == headersEnd) {
        r.report(finding::blockDangles, place, word, {}, blockName);
    } else if (!header || file.primitiveHeaders[*header].kind == PrimitiveHeaderKind::shared) {
        r.report(finding::blockMisses, place, word, {}, blockName);
    } else if (file.primitiveHeaders[*header].coordinate) {
        const FindingKind& kind =
            wordlessEntries(file) ? finding::blockDangles : finding::blockTwice;
        r.report(kind, place, word, file.primitiveHeaders[*header].coordinate, blockName);
    } else {
        file.primitiveHeaders[*header].coordinate = coordinate;
        file.coordinates[coordinate].header = header;
    }
}

/// Gives the header of shared vertices that an independent header leads to the same coordinate.
/// A block that begins there instead skips the first header.
void followChains(Reading& r) {
    std::vector<PrimitiveHeader>& headers = r.file.primitiveHeaders;
    for (std::size_t i = 0; i + 1 < headers.size(); ++i) {
        PrimitiveHeader& next = headers[i + 1];
        if (headers[i].kind != PrimitiveHeaderKind::independent ||
            r.at(headers[i].offset) != next.offset) {
            continue;
        }
        if (next.coordinate && !headers[i].coordinate) {
            const std::uint32_t place = firstCoordinateBlock + *next.coordinate;
            r.report(finding::blockMisses, place, r.at(place), {}, blockName);
        }
        next.coordinate = headers[i].coordinate;
    }
}

void checkUnusedHeaders(Reading& r) {
    for (std::size_t i = 0; i < coordinateHeaders(r.file); ++i) {
        const PrimitiveHeader& header = r.file.primitiveHeaders[i];
        if (!header.coordinate && !r.file.coordinates.empty()) {
            r.report(finding::headerUnused, header.offset, r.at(header.offset));
        }
    }
}

void checkPostBlock(Reading& r) {
    const std::uint32_t place =
        firstCoordinateBlock + static_cast<std::uint32_t>(r.file.coordinates.size());
    const std::vector<PrimitiveHeader>& headers = r.file.primitiveHeaders;
    const bool shared = coordinateHeaders(r.file) < headers.size();
    r.checkOffset(place, word_name::postPrimitiveTop, shared ? headers.back().offset : 0);
}

/// Bit 23 marks the first type of the first header of the first coordinate with objects.
void checkFirstBit(Reading& r, std::optional<std::uint32_t> firstHeader, bool certain) {
    for (std::size_t i = 0; i < r.file.primitiveHeaders.size(); ++i) {
        const PrimitiveHeader& header = r.file.primitiveHeaders[i];
        for (std::uint32_t offset = header.offset + headWords;
             offset + descriptionWords <= header.offset + header.words;
             offset += descriptionWords) {
            const bool first = firstHeader == i && offset == header.offset + headWords;
            const bool marked = (r.at(offset) & type_code::first) != 0;
            if (first != marked && (certain || !first)) {
                r.report(first ? finding::bit23Missing : finding::bit23Set, offset, r.at(offset),
                         r.at(offset) ^ type_code::first, word_name::type);
            }
            if (header.kind == PrimitiveHeaderKind::sharedVertices) {
                break;
            }
        }
    }
}

/// The global header that the first coordinate's header uses names the coordinates.
void checkCoordinateTop(Reading& r, GlobalHeaderKind kind, std::uint32_t words) {
    const std::optional<GlobalHeader>& header = r.file.globalHeader(kind);
    if (header && header->words != words) {
        r.report(finding::sizeDisagrees, header->offset, header->words - 1, words - 1,
                 globalHeaderWord(kind, 0));
    }
}

}  // namespace

void readBlocks(Reading& r) {
    VxbFile& file = r.file;
    const std::size_t coordinateHeaderNum = coordinateHeaders(file);
    const std::uint32_t headersEnd = coordinateHeaderNum < file.primitiveHeaders.size()
                                         ? file.primitiveHeaders[coordinateHeaderNum].offset
                                         : r.headersEnd;
    std::optional<std::uint32_t> firstObject;
    for (std::uint32_t c = 0; c < file.coordinates.size(); ++c) {
        readCoordinateBlock(r, c, headersEnd);
        if (!firstObject && r.at(firstCoordinateBlock + c) != 0) {
            firstObject = c;
        }
    }
    followChains(r);
    checkUnusedHeaders(r);
    checkPostBlock(r);

    std::optional<std::uint32_t> firstHeader;
    if (firstObject) {
        firstHeader = file.coordinates[*firstObject].header;
    }
    const bool certain = !wordlessEntries(file);
    checkFirstBit(r, firstHeader, certain);
    if (certain) {
        const bool independent = firstHeader && file.primitiveHeaders[*firstHeader].kind ==
                                                    PrimitiveHeaderKind::independent;
        checkCoordinateTop(r, GlobalHeaderKind::independent,
                           format::independentGlobalHeaderSize + (independent ? 1 : 0));
        checkCoordinateTop(r, GlobalHeaderKind::shared,
                           format::sharedGlobalHeaderSize + (firstHeader && !independent ? 1 : 0));
    }
}

}  // namespace mqf2vxb::reading
