#include "writers/image_section.h"

#include <string>
#include <utility>
#include <vector>

#include "format/format.h"
#include "organise/sizes.h"
#include "readers/pxl_reader.h"

namespace mqf2vxb {
namespace {

/// Word offsets of the CLUT data of the images by slot, from the start of the CLUT area.
std::vector<std::uint32_t> clutOffsets(const Table<ImageRecord>& images) {
    std::vector<std::uint32_t> offsets;
    offsets.reserve(images.size());
    std::uint32_t next = 0;
    for (const ImageRecord& image : images) {
        offsets.push_back(next);
        if (image.hasClut()) {
            next += static_cast<std::uint32_t>(image.clut.dataWords);
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
            stream.putWord(image.pixel.header[0]);
            stream.putWord(image.pixel.header[1]);
            stream.putWord(pixelOffset);
            if (image.hasClut()) {
                stream.putWord(image.clut.header[0]);
                stream.putWord(image.clut.header[1]);
                stream.putWord(clutOffset[slot]);
            }
            pixelOffset += static_cast<std::uint32_t>(image.pixel.dataWords);
        }
    }
}

}  // namespace

void writeImageSection(const Model& model, const OutputLayout& layout, InputFiles& files,
                       OutputWordStream& stream) {
    stream.checkPosition(layout.imageSection, "image section");
    stream.putWord(format::endOfChain, "/* Next Primitive Pointer */");
    stream.putWord(layout.imageHeader.offset, "/* Image Primitive Global Header Pointer */");
    stream.putWord(static_cast<std::uint32_t>(model.malimage.malpxltype.size()) | format::bit31,
                   "/* Type Number */");
    writeDescriptors(model, stream);

    // The first word of each data area alone carries the area's comment.
    stream.checkPosition(layout.imageTop, "image data");
    std::string_view comment = "/* Image Top */";
    std::string cluts;  // in slot order: all images with a CLUT are of one type
    for (const PixelTypeEntry& entry : model.malimage.malpxltype) {
        for (const std::size_t slot : entry.images) {
            const ImageRecord& image = model.images[slot];
            const FileContents file = imageFile(image, files);
            const StoredWords pixels = image.pixel.data(file.text());
            if (!pixels.empty()) {
                stream.putStored(pixels, std::exchange(comment, {}));
            }
            cluts += image.clut.data(file.text()).bytes();
        }
    }
    stream.putStored(StoredWords(cluts), "/* Clut Top */");
}

}  // namespace mqf2vxb
