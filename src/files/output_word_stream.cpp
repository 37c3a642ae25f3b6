#include "files/output_word_stream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <utility>

#include "base/diagnostics.h"

namespace mqf2vxb {
namespace {

/// The two hex digits of each byte: half the steps of writing digit by digit.
constexpr auto hexPairs = [] {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<std::array<char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
        pairs[byte] = {digits[byte / 16], digits[byte % 16]};
    }
    return pairs;
}();

constexpr std::size_t hexWordLength = 12;
constexpr std::size_t mostDigits = 11;  // of a 32-bit number and its sign

/// Writes what a line of hex text starts with, and returns the end.
char* putHexWord(char* place, std::uint32_t word) {
    const auto putPair = [place](std::size_t i, std::uint32_t byte) {
        std::copy_n(hexPairs[byte].data(), 2, place + i);
    };
    place[0] = '0';
    place[1] = 'x';
    putPair(2, word >> 24U);
    putPair(4, word >> 16U & 0xFFU);
    putPair(6, word >> 8U & 0xFFU);
    putPair(8, word & 0xFFU);
    place[10] = ',';
    place[11] = '\t';
    return place + hexWordLength;
}

constexpr std::size_t longestHexLine(std::string_view comment) {
    return hexWordLength + comment.size() + mostDigits + 1;
}

}  // namespace

BlockWriter::BlockWriter(OutputFiles& files, std::string name)
    : name_(std::move(name)),
      file_(files.create(name_)),
      bytes_(std::make_unique_for_overwrite<char[]>(capacity)) {
    if (!file_) {
        cannotOpen(name_, Access::write, errno);
    }
}

BlockWriter::~BlockWriter() {
    if (file_) {
        // The conversion has failed already, and its report tells why: nothing is added to it.
        static_cast<void>(file_->write({bytes_.get(), used_}));
    }
}

void BlockWriter::put(std::string_view bytes) {
    while (!bytes.empty()) {
        if (used_ == capacity) {
            writeBlocks();
        }
        const std::size_t size = bytes.copy(bytes_.get() + used_, capacity - used_);
        used_ += size;
        bytes.remove_prefix(size);
    }
}

void BlockWriter::putWords(std::span<const std::uint32_t> words) {
    if constexpr (std::endian::native == std::endian::little) {
        put({reinterpret_cast<const char*>(words.data()), words.size_bytes()});
    } else {
        for (const std::uint32_t word : words) {
            putWord(word);
        }
    }
}

/// Writes the blocks that are full; what is left of another moves to the front.
void BlockWriter::writeBlocks() {
    const std::size_t whole = used_ - used_ % blockSize;
    write(whole);
    used_ -= whole;
    std::copy_n(bytes_.get() + whole, used_, bytes_.get());
}

void BlockWriter::write(std::size_t size) {
    if (!file_->write({bytes_.get(), size})) {
        used_ = 0;  // or the destructor would write it again
        cannotWrite(name_, errno);
    }
}

void BlockWriter::close() {
    write(used_);
    const std::unique_ptr<OutputFile> file = std::move(file_);
    if (!file->close()) {
        cannotWrite(name_, errno);
    }
}

OutputWordStream::OutputWordStream(OutputFiles& files, const std::string& vxbName,
                                   const std::string* hexName)
    : vxb_(files, vxbName),
      hex_(hexName != nullptr ? std::make_unique<BlockWriter>(files, *hexName) : nullptr) {}

void OutputWordStream::putWords(std::span<const std::uint32_t> words, std::string_view comment,
                                std::int32_t argument) {
    vxb_.putWords(words);
    if (hex_ && comment.empty()) {
        putHexLines(words);
    } else if (hex_) {
        for (const std::uint32_t word : words) {
            putHexLine(word, comment, argument);
        }
    }
    position_ += words.size();
}

void OutputWordStream::putStored(StoredWords words, std::string_view firstComment) {
    vxb_.put(words.bytes());
    if (hex_ && !words.empty()) {
        putHexLine(words[0], firstComment, -1);
        putHexLines(words.from(1));
    }
    position_ += words.size();
}

/// Lines without comment, as many at a time as a block holds.
template <class Words>
void OutputWordStream::putHexLines(const Words& words) {
    constexpr std::size_t most = BlockWriter::blockSize / (hexWordLength + 1);
    std::size_t i = 0;
    while (i < words.size()) {
        const std::size_t end = std::min(words.size(), i + most);
        char* place = hex_->room((end - i) * (hexWordLength + 1));
        for (; i < end; ++i) {
            place = putHexWord(place, words[i]);
            *place++ = '\n';
        }
        hex_->add(place);
    }
}

void OutputWordStream::putHexLine(std::uint32_t word, std::string_view comment,
                                  std::int32_t argument) {
    char* place = putHexWord(hex_->room(longestHexLine(comment)), word);
    const std::size_t number = argument == -1 ? std::string_view::npos : comment.find("%d");
    if (number != std::string_view::npos) {
        place += comment.copy(place, number);
        place = std::to_chars(place, place + mostDigits, argument).ptr;
        comment.remove_prefix(number + 2);
    }
    place += comment.copy(place, comment.size());
    *place++ = '\n';
    hex_->add(place);
}

void OutputWordStream::checkPosition(std::uint64_t offset, std::string_view section) const {
    if (position_ != offset) {
        layoutFault(section, offset, position_);
    }
}

void OutputWordStream::closeHex() {
    if (hex_) {
        hex_->close();
    }
}

}  // namespace mqf2vxb
