#include "readers/pxl_reader.h"

#include <optional>
#include <string>
#include <utility>

#include "base/diagnostics.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t idBit = 0x10;
constexpr std::uint32_t modeBits = 0x03;
constexpr std::uint32_t mode24Bit = 3;
constexpr std::uint32_t clutBit = 0x08;
constexpr std::uint32_t wordSize = 4;

/// Takes the blocks of one image file from front to back. The bytes may be the first of the file
/// only, for nothing is read of a block but its header.
class ImageBlocks {
public:
    ImageBlocks(const std::string& name, const FileStart& start)
        : name_(name), bytes_(start.contents.text()), fileSize_(start.fileSize) {}

    /// The bytes hold the next block's header, or all of the file.
    [[nodiscard]] bool hasHeader() const {
        constexpr std::size_t size = wordSize * (1 + PxlBlock::headerWords);
        return bytes_.size() == fileSize_ || next_ + size <= bytes_.size();
    }

    std::uint32_t word(const std::string& missing) {
        const std::size_t start = take(1, missing);
        return StoredWords(bytes_.substr(start, wordSize))[0];
    }

    PxlBlock block(const std::string& what) {
        const auto length = static_cast<std::int32_t>(
            word("the file ends before the length of its " + what + " block"));
        // The length counts its own word, and a block has its two header words at least.
        constexpr std::int32_t shortest = wordSize * (1 + PxlBlock::headerWords);
        if (length < shortest) {
            notCorrectData({name_}, "the " + what + " block is " + std::to_string(length) +
                                        " bytes long, shorter than its header");
        }
        const std::size_t words = static_cast<std::uint32_t>(length) / wordSize - 1;
        const std::size_t start = take(words, "the file ends inside its " + what + " block");
        constexpr std::size_t headerSize = wordSize * PxlBlock::headerWords;
        const StoredWords header(bytes_.substr(start, headerSize));
        return {{header[0], header[1]}, start + headerSize, words - PxlBlock::headerWords};
    }

private:
    /// Goes past these words; returns where they start.
    std::size_t take(std::size_t words, const std::string& missing) {
        if (words > (fileSize_ - next_) / wordSize) {
            notCorrectData({name_}, missing);
        }
        return std::exchange(next_, next_ + words * wordSize);
    }

    const std::string& name_;
    std::string_view bytes_;
    std::size_t fileSize_;
    std::size_t next_ = 0;
};

/// Fills the record from its file; false when more of the file is needed.
bool scanImage(const FileStart& start, ImageRecord& image) {
    ImageBlocks blocks(image.name, start);
    const std::string missing = "the file ends before its header is complete";
    if ((blocks.word(missing) & idBit) == 0) {
        notFormat(image.name, "PXL");
    }
    const std::uint32_t flag = blocks.word(missing);
    image.type = (flag & clutBit) != 0 ? type_code::imageWithClut : type_code::image;
    image.mode = flag & modeBits;
    if (image.mode == mode24Bit) {
        no24BitImage(image.name);
    }
    if (image.hasClut()) {
        image.clut = blocks.block("CLUT");
    }
    if (!blocks.hasHeader()) {
        return false;
    }
    image.pixel = blocks.block("pixel");
    return true;
}

/// Whether the file says again what the record holds.
bool isStill(const ImageRecord& image, const FileStart& file) {
    ImageRecord found;
    found.name = image.name;
    try {
        scanImage(file, found);
    } catch (const Report&) {
        return false;
    }
    return found.type == image.type && found.mode == image.mode && found.clut == image.clut &&
           found.pixel == image.pixel;
}

}  // namespace

void readImages(Inputs& inputs, Table<ImageRecord>& images) {
    // Holds the headers, and the colours of most tables.
    constexpr std::size_t startSize = 4096;
    for (ImageRecord& image : images) {
        FileStart start = inputs.openStart(image.name, startSize);
        if (!scanImage(start, image)) {
            start = inputs.openStart(image.name, largestFile);
            scanImage(start, image);
        }
        if (inputs.observer() != nullptr || !start.canBeReadAgain) {
            image.file = std::move(start.contents);
        }
    }
}

FileContents imageFile(const ImageRecord& image, InputFiles& files) {
    if (image.file) {
        return *image.file;
    }
    const std::size_t size = image.pixel.dataStart + wordSize * image.pixel.dataWords;
    std::optional<FileContents> contents = files.readAgain(image.name, size);
    if (!contents || !isStill(image, {*contents, size})) {
        notCorrectData({image.name}, "the file changed while it was converted");
    }
    return std::move(*contents);
}

}  // namespace mqf2vxb
