#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "files/output_files.h"
#include "model/image.h"

namespace mqf2vxb {

/// A file that is written in whole blocks, because a write that begins inside a page costs more.
/// What was put is written when the file is destroyed too, so that a conversion that stops leaves
/// behind just what it had put.
class BlockWriter {
public:
    /// Creates the file; one that cannot be created is reported.
    BlockWriter(OutputFiles& files, std::string name);
    ~BlockWriter();
    BlockWriter(const BlockWriter&) = delete;
    BlockWriter& operator=(const BlockWriter&) = delete;

    void put(std::string_view bytes);
    void putWord(std::uint32_t word) {
        char* const place = room(sizeof word);
        place[0] = static_cast<char>(word & 0xFFU);
        place[1] = static_cast<char>(word >> 8U & 0xFFU);
        place[2] = static_cast<char>(word >> 16U & 0xFFU);
        place[3] = static_cast<char>(word >> 24U);
        add(place + sizeof word);
    }
    void putWords(std::span<const std::uint32_t> words);
    /// Where the next bytes go, with room for `size`, at most a block. They become part of the
    /// file when they are added.
    char* room(std::size_t size) {
        if (capacity - used_ < size) {
            writeBlocks();
        }
        return bytes_.get() + used_;
    }
    /// Adds the bytes that were written from where room() said up to `end`.
    void add(const char* end) { used_ = static_cast<std::size_t>(end - bytes_.get()); }
    /// Writes what is left and closes the file; bytes that could not be written are reported.
    void close();

    static constexpr std::size_t blockSize = std::size_t{1} << 17U;

private:
    void writeBlocks();
    void write(std::size_t size);

    static constexpr std::size_t capacity = 2 * blockSize;

    std::string name_;
    std::unique_ptr<OutputFile> file_;
    std::unique_ptr<char[]> bytes_;
    std::size_t used_ = 0;
};

/// The words of the VXB file and, when asked for, their hex text: one line per word with a
/// comment that says what the word is. Both always hold the same words.
class OutputWordStream {
public:
    /// Creates the VXB file and, unless `hexName` is null, then the hex text.
    OutputWordStream(OutputFiles& files, const std::string& vxbName, const std::string* hexName);

    /// Puts words that share a comment. A "%d" in the comment stands for `argument`, unless that
    /// is -1. The comment has no line feed and is short; an empty one leaves the word alone on its
    /// line.
    void putWords(std::span<const std::uint32_t> words, std::string_view comment = {},
                  std::int32_t argument = -1);
    void putWord(std::uint32_t word, std::string_view comment = {}, std::int32_t argument = -1) {
        vxb_.putWord(word);
        if (hex_) {
            putHexLine(word, comment, argument);
        }
        ++position_;
    }
    /// Puts words as they were read from a file, all but the first without comment.
    void putStored(StoredWords words, std::string_view firstComment);

    /// The number of words put so far, which is the word offset of the next.
    [[nodiscard]] std::uint64_t position() const { return position_; }
    /// Reports a fault of this program when the next word is not at `offset`.
    void checkPosition(std::uint64_t offset, std::string_view section) const;

    void closeVxb() { vxb_.close(); }
    void closeHex();

private:
    template <class Words>
    void putHexLines(const Words& words);
    void putHexLine(std::uint32_t word, std::string_view comment, std::int32_t argument);

    BlockWriter vxb_;
    std::unique_ptr<BlockWriter> hex_;
    std::uint64_t position_ = 0;
};

}  // namespace mqf2vxb
