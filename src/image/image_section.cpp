#include "image/image_section.h"

#include <utility>
#include <vector>

#include "output/format.h"
#include "output/sizes.h"

namespace mqf2vxb {
namespace {

/// The first word of each data area alone carries the area's comment.
void putData(const StoredWords& words, std::string_view& areaComment, OutputWordStream& stream) {
    if (!words.empty()) {
        stream.putStored(words, std::exchange(areaComment, {}));
    }
}

/// Word offsets of the CLUT data of the images by slot, from the start of the CLUT area.
std::vector<std::uint32_t> clutOffsets(const Table<ImageRecord>& images) {
    std::vector<std::uint32_t> offsets;
    offsets.reserve(images.size());
    std::uint32_t next = 0;
    for (const ImageRecord& image : images) {
        offsets.push_back(next);
        if (image.hasClut()) {
            next += static_cast<std::uint32_t>(image.clut.data().size());
        }
    }
    return offsets;
}

void writeDescriptors(const Model& model, OutputWordStream& stream) {
    const std::vector<std::uint32_t> clutOffset = clutOffsets(model.images);
    std::uint32_t pixelOffset = 0;
    for (const PixelTypeEntry& entry : model.malimage.malpxltype) {
        const auto number = static_cast<std::uint32_t>(entry.images.size());
        const std::uint64_t size = 1 + imagetsize(entry.type, number);
        stream.putWord(entry.type, "/* Type */");
        stream.putWord(format::numberAndSize(number, static_cast<std::uint32_t>(size)),
                       "/* Image Number, Size */");
        for (const std::size_t slot : entry.images) {
            const ImageRecord& image = model.images[slot];
            stream.putWord(image.pixel.words[0]);
            stream.putWord(image.pixel.words[1]);
            stream.putWord(pixelOffset);
            if (image.hasClut()) {
                stream.putWord(image.clut.words[0]);
                stream.putWord(image.clut.words[1]);
                stream.putWord(clutOffset[slot]);
            }
            pixelOffset += static_cast<std::uint32_t>(image.pixel.data().size());
        }
    }
}

}  // namespace

void writeImageSection(const Model& model, const OutputLayout& layout, OutputWordStream& stream) {
    stream.checkPosition(layout.imageSection, "image section");
    stream.putWord(format::endOfChain, "/* Next Primitive Pointer */");
    stream.putWord(layout.imageHeader.offset, "/* Image Primitive Global Header Pointer */");
    stream.putWord(static_cast<std::uint32_t>(model.malimage.malpxltype.size()) | format::bit31,
                   "/* Type Number */");
    writeDescriptors(model, stream);

    stream.checkPosition(layout.imageTop, "image data");
    std::string_view comment = "/* Image Top */";
    for (const PixelTypeEntry& entry : model.malimage.malpxltype) {
        for (const std::size_t slot : entry.images) {
            putData(model.images[slot].pixel.data(), comment, stream);
        }
    }
    comment = "/* Clut Top */";
    for (const ImageRecord& image : model.images) {
        if (image.hasClut()) {
            putData(image.clut.data(), comment, stream);
        }
    }
}

}  // namespace mqf2vxb
