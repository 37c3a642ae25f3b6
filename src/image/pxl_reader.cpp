#include "image/pxl_reader.h"

#include <string>

#include "driver/diagnostics.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t idBit = 0x10;
constexpr std::uint32_t modeBits = 0x03;
constexpr std::uint32_t mode24Bit = 3;
constexpr std::uint32_t clutBit = 0x08;
constexpr std::uint32_t wordSize = 4;

/// Takes the words of one image file from front to back.
class ImageWords {
public:
    ImageWords(const std::string& name, std::string_view bytes) : name_(name), bytes_(bytes) {}

    std::uint32_t word() { return take(1, "the file ends before its header is complete")[0]; }

    PxlBlock block(const std::string& what) {
        const auto length = static_cast<std::int32_t>(
            take(1, "the file ends before the length of its " + what + " block")[0]);
        // The length counts its own word, and a block has its two header words at least.
        constexpr std::int32_t shortest = wordSize * (1 + PxlBlock::headerWords);
        if (length < shortest) {
            notCorrectData({name_}, "the " + what + " block is " + std::to_string(length) +
                                        " bytes long, shorter than its header");
        }
        return {take(static_cast<std::uint32_t>(length) / wordSize - 1,
                     "the file ends inside its " + what + " block")};
    }

private:
    StoredWords take(std::size_t number, const std::string& missing) {
        if (number > bytes_.size() / wordSize) {
            notCorrectData({name_}, missing);
        }
        const StoredWords words(bytes_.substr(0, number * wordSize));
        bytes_.remove_prefix(number * wordSize);
        return words;
    }

    const std::string& name_;
    std::string_view bytes_;
};

void readImage(ImageRecord& image) {
    ImageWords words(image.name, image.file.text());
    if ((words.word() & idBit) == 0) {
        notFormat(image.name, "PXL");
    }
    const std::uint32_t flag = words.word();
    image.type = (flag & clutBit) != 0 ? type_code::imageWithClut : type_code::image;
    image.mode = flag & modeBits;
    if (image.mode == mode24Bit) {
        no24BitImage(image.name);
    }
    if (image.hasClut()) {
        image.clut = words.block("CLUT");
    }
    image.pixel = words.block("pixel");
}

}  // namespace

void readImages(Inputs& inputs, Table<ImageRecord>& images) {
    for (ImageRecord& image : images) {
        image.file = inputs.open(image.name);
        readImage(image);
    }
}

}  // namespace mqf2vxb
