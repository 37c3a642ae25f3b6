#include "driver/output_word_stream.h"

#include <array>
#include <bit>
#include <utility>

#include "driver/diagnostics.h"

namespace mqf2vxb {
namespace {

constexpr std::size_t blockSize = std::size_t{1} << 18U;

}  // namespace

BlockWriter::BlockWriter(FileSystem& files, std::string name)
    : name_(std::move(name)),
      file_(files.create(name_)),
      block_(std::make_unique_for_overwrite<char[]>(blockSize)) {
    if (!file_) {
        cannotOpen(name_);
    }
}

BlockWriter::~BlockWriter() {
    if (file_) {
        // The conversion has failed already and its report goes out: nothing more can be said.
        static_cast<void>(file_->write({block_.get(), used_}));
    }
}

void BlockWriter::put(std::string_view bytes) {
    if (bytes.size() > blockSize - used_) {
        flush();
        if (bytes.size() >= blockSize) {
            if (!file_->write(bytes)) {
                cannotWrite(name_);
            }
            return;
        }
    }
    // Unlike memcpy, this takes an empty view, whose data may be null.
    used_ += bytes.copy(block_.get() + used_, bytes.size());
}

void BlockWriter::putWord(std::uint32_t word) {
    if (blockSize - used_ < sizeof word) {
        flush();
    }
    char* place = block_.get() + used_;
    place[0] = static_cast<char>(word & 0xFFU);
    place[1] = static_cast<char>(word >> 8U & 0xFFU);
    place[2] = static_cast<char>(word >> 16U & 0xFFU);
    place[3] = static_cast<char>(word >> 24U);
    used_ += sizeof word;
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

void BlockWriter::flush() {
    const std::size_t size = std::exchange(used_, 0);
    if (!file_->write({block_.get(), size})) {
        cannotWrite(name_);
    }
}

void BlockWriter::close() {
    flush();
    const std::unique_ptr<OutputFile> file = std::move(file_);
    if (!file->close()) {
        cannotWrite(name_);
    }
}

OutputWordStream::OutputWordStream(FileSystem& files, const std::string& vxbName,
                                   const std::string* hexName)
    : vxb_(files, vxbName),
      hex_(hexName != nullptr ? std::make_unique<BlockWriter>(files, *hexName) : nullptr) {}

void OutputWordStream::putWords(std::span<const std::uint32_t> words, std::string_view comment,
                                std::int32_t argument) {
    vxb_.putWords(words);
    if (hex_) {
        for (const std::uint32_t word : words) {
            putHexLine(word, comment, argument);
        }
    }
    position_ += words.size();
}

void OutputWordStream::putStored(StoredWords words, std::string_view firstComment) {
    vxb_.put(words.bytes());
    if (hex_) {
        for (std::size_t i = 0; i < words.size(); ++i) {
            putHexLine(words[i], i == 0 ? firstComment : std::string_view{}, -1);
        }
    }
    position_ += words.size();
}

void OutputWordStream::putHexLine(std::uint32_t word, std::string_view comment,
                                  std::int32_t argument) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<char, 12> start{'0', 'x', '0', '0', '0', '0', '0', '0', '0', '0', ',', '\t'};
    for (std::size_t i = 9; i >= 2; --i) {
        start[i] = digits[word & 0xFU];
        word >>= 4U;
    }
    hex_->put({start.data(), start.size()});
    const std::size_t number = argument == -1 ? std::string_view::npos : comment.find("%d");
    if (number == std::string_view::npos) {
        hex_->put(comment);
    } else {
        hex_->put(comment.substr(0, number));
        hex_->put(std::to_string(argument));
        hex_->put(comment.substr(number + 2));
    }
    hex_->put("\n");
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
