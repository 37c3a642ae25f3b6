#include "vxbtool/model_text/component_files.h"

namespace vxbtool::model_text {
namespace {

void writeBlock(const ImageBlock& block, TextFile& file) {
    // The block's length counts its own word and the two behind it.
    file.word(static_cast<std::uint32_t>(4 * (3 + block.words.size())));
    file.word(block.x | std::uint32_t{block.y} << 16U);
    file.word(block.size);
    for (const std::uint32_t word : block.words) {
        file.word(word);
    }
}

}  // namespace

void writeTexture(const Texture& texture, TextFile& file) {
    constexpr std::uint32_t id = 0x10;
    constexpr std::uint32_t hasClut = 0x08;
    file.word(id);
    file.word(texture.mode | (texture.clut ? hasClut : 0));
    if (texture.clut) {
        writeBlock(*texture.clut, file);
    }
    writeBlock(texture.pixels, file);
}

}  // namespace vxbtool::model_text
