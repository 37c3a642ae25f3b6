// The image section: an entry for every image, then all pixels, then all colour lookup tables.

#include <algorithm>

#include "format/format.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

using format::bit31;
using namespace global_header;

constexpr GlobalHeaderKind header = GlobalHeaderKind::image;
constexpr std::uint32_t blockWords = 3;  // position, size and data offset

bool isImageType(std::uint32_t word) {
    return word == type_code::image || word == type_code::imageWithClut;
}

ImageBlock readBlock(const Reading& r, std::uint32_t offset) {
    ImageBlock block;
    block.x = r.at(offset) & 0xFFFFU;
    block.y = r.at(offset) >> 16U;
    block.width = r.at(offset + 1) & 0xFFFFU;
    block.height = r.at(offset + 1) >> 16U;
    block.offset = r.at(offset + 2);
    return block;
}

void readEntry(Reading& r, bool clut, std::uint32_t limit) {
    Image image;
    image.offset = r.cursor();
    const std::uint32_t words = clut ? 2 * blockWords : blockWords;
    if (r.take(Part::imageEntry, static_cast<std::uint32_t>(r.file.images.size()), words,
               "an image's entry", limit) < words) {
        return;
    }
    image.pixels = readBlock(r, image.offset);
    if (clut) {
        image.clut = readBlock(r, image.offset + blockWords);
    }
    r.file.images.push_back(image);
}

/// The number of images that a type lists. The word gives it twice, as a number and by a size; where
/// the two differ, the size counts if it leads to the next type or to the end.
std::uint32_t imageNumber(Reading& r, std::uint32_t offset, bool clut, std::uint32_t limit) {
    const std::uint32_t words = clut ? 2 * blockWords : blockWords;
    const std::uint32_t number = r.at(offset) >> 16U & format::largestNumber;
    const std::uint32_t size = r.at(offset) & format::largestSize;
    r.checkBit31(offset, word_name::imageNumberSize);
    if (size == 1 + std::uint64_t{words} * number) {
        return number;
    }
    const std::uint64_t behind = std::uint64_t{offset} + size;
    if (size > 1 && (size - 1) % words == 0 &&
        (behind == limit || (behind < limit && isImageType(r.at(behind))))) {
        r.checkCount(offset, word_name::imageNumberSize, number, (size - 1) / words);
        return (size - 1) / words;
    }
    r.report(finding::sizeDisagrees, offset, size, 1 + words * number, word_name::imageNumberSize);
    return number;
}

void readTypes(Reading& r, std::uint32_t limit) {
    const std::uint32_t offset = r.cursor() - 1;
    const std::uint32_t number = r.at(offset) & ~bit31;
    r.checkBit31(offset, word_name::typeNumber);
    std::uint32_t types = 0;
    std::uint32_t last = 0;
    while (r.cursor() < limit && (types < number || isImageType(r.at(r.cursor()))) && types < 2) {
        const std::uint32_t type = r.at(r.cursor());
        if (!isImageType(type)) {
            r.report(finding::unknownType, r.cursor(), type, {}, word_name::type);
        } else if (type == last) {
            r.report(finding::typeTwice, r.cursor(), type, {}, word_name::type);
        }
        last = type;
        const std::uint32_t place = r.cursor();
        if (r.take(Part::imageType, types, format::imageTypeSize, "a type of images", limit) <
            format::imageTypeSize) {
            break;
        }
        const bool clut = (type & 1U) != 0;
        const std::uint32_t images = imageNumber(r, place + 1, clut, limit);
        for (std::uint32_t i = 0; i < images && r.cursor() < limit; ++i) {
            readEntry(r, clut, limit);
        }
        ++types;
    }
    r.checkCount(offset, word_name::typeNumber, number, types);
}

/// Gives every block its place in the data area and its words: up to the next block's.
void placeBlocks(Reading& r, const std::vector<ImageBlock*>& blocks,
                 const std::vector<std::uint32_t>& offsetWords, std::uint32_t top,
                 std::uint32_t words, std::string_view name) {
    std::uint32_t before = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ImageBlock& block = *blocks[i];
        const bool misplaced = i == 0 ? block.offset != 0 : block.offset < before;
        if (misplaced || block.offset > words) {
            r.report(finding::imageOffset, offsetWords[i], block.offset, before, name);
            block.offset = before;
        }
        before = block.offset;
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        ImageBlock& block = *blocks[i];
        const std::uint32_t end = i + 1 < blocks.size() ? blocks[i + 1]->offset : words;
        block.words = end - block.offset;
        block.offset += top;
    }
}

void placeImages(Reading& r, std::uint32_t pixelTop, std::uint32_t pixelEnd) {
    std::vector<ImageBlock*> pixels;
    std::vector<ImageBlock*> cluts;
    std::vector<std::uint32_t> pixelWords;
    std::vector<std::uint32_t> clutWords;
    for (Image& image : r.file.images) {
        pixels.push_back(&image.pixels);
        pixelWords.push_back(image.offset + 2);
        if (image.clut) {
            cluts.push_back(&*image.clut);
            clutWords.push_back(image.offset + blockWords + 2);
        }
    }
    placeBlocks(r, pixels, pixelWords, pixelTop, pixelEnd - pixelTop,
                "the offset of an image's pixels");
    placeBlocks(r, cluts, clutWords, pixelEnd, r.end() - pixelEnd,
                "the offset of an image's lookup table");
}

}  // namespace

void readImages(Reading& r) {
    if (!r.file.globalHeader(header) || r.imagesStart >= r.end()) {
        return;
    }
    r.skipTo(r.imagesStart);
    const std::uint32_t offset = r.cursor();
    if (r.take(Part::imageHeader, 0, format::primitiveHeaderSize, "the image header") <
        format::primitiveHeaderSize) {
        return;
    }
    r.checkChainEnd(offset);
    r.checkOffset(offset + 1, word_name::imagePrimitiveGlobalHeaderPointer,
                  r.file.globalHeader(header)->offset);
    const auto named = r.top(header, imageTop);
    const bool namedFits = named && *named >= r.cursor() && *named <= r.end();
    readTypes(r, namedFits ? *named : r.end());
    r.checkTop(header, imageTop, r.cursor());

    const std::uint32_t pixelTop = r.cursor();
    const bool cluts = std::any_of(r.file.images.begin(), r.file.images.end(),
                                   [](const Image& image) { return image.clut.has_value(); });
    std::uint32_t pixelEnd = r.end();
    if (cluts) {
        const auto top = r.top(header, clutTop);
        if (top && *top >= pixelTop && *top <= r.end()) {
            pixelEnd = *top;
            r.checkTop(header, clutTop, *top);
        } else {
            const std::uint32_t place = r.file.globalHeader(header)->offset + clutTop;
            r.report(finding::offsetOutside, place, r.at(place), {},
                     globalHeaderWord(header, clutTop));
        }
    } else {
        r.checkTop(header, clutTop, std::nullopt);
    }
    r.take(Part::pixels, 0, pixelEnd - pixelTop, "pixels");
    r.take(Part::cluts, 0, r.end() - pixelEnd, "lookup tables");
    placeImages(r, pixelTop, pixelEnd);
}

}  // namespace mqf2vxb::reading
