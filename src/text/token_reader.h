#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "text/line_reader.h"

namespace mqf2vxb {

/// Indices from `first` to `last`, both included.
struct IndexRange {
    std::int32_t first;
    std::int32_t last;
};

/// Reads by characters what follows the ID line of a coordinate, group or mesh file. A "#" drops
/// everything up to and including the next line feed, so that a comment behind a value joins its
/// line to the next one.
class TokenReader {
public:
    /// Goes on where `lines` stands; `lines` outlives the reader.
    explicit TokenReader(const LineReader& lines) : lines_(lines), rest_(lines.rest()) {}

    static constexpr int endOfFile = -1;
    /// The next character behind comments, or endOfFile.
    int readChar();
    /// The most records of at least `recordSize` characters that the rest of the file can hold.
    [[nodiscard]] std::size_t mostRecords(std::size_t recordSize) const {
        // The last record may end with the file instead of a separator.
        return (rest_.size() + 1) / recordSize;
    }
    /// Skips everything up to and including the next `wanted`.
    void skipPast(char wanted);

    // Each token's text is good until the next one is read, at most 255 characters long, and ends
    // before its first NUL character. A file that ends before a token's first character is
    // refused.

    /// Everything up to the next line feed, which is taken too.
    std::string_view restOfLine();
    /// The next run of characters without blank, tab and line feed.
    std::string_view word();
    /// A word; nothing when the end of the file is met before it or inside it.
    std::optional<std::string_view> checkedWord();
    /// Like a word, but a comma separates too.
    std::string_view item();
    /// An item that is one index or a range "a-b"; separators may stand behind the "-".
    IndexRange rangeItem();

    /// A token as a decimal number: 0 without digits; one that does not fit 32 bits is refused.
    [[nodiscard]] std::int32_t number(std::string_view token) const;
    std::int32_t wordNumber() { return number(word()); }
    /// A 16-bit field keeps the low 16 bits of its number.
    std::int16_t wordNumber16() { return static_cast<std::int16_t>(wordNumber()); }
    /// The rest of the line as a count: refused when it is negative, or larger than the rest of
    /// the file can hold when each of `what` takes at least `recordSize` characters.
    std::int32_t restOfLineCount(std::size_t recordSize, std::string_view what);
    /// A word as a count, checked the same way.
    std::int32_t wordCount(std::size_t recordSize, std::string_view what);

    /// Nothing more is read.
    void finish() const;

    /// The line of the token read last as a place of the input.
    [[nodiscard]] Place place() const;
    /// Refuses the file, naming the line of the token read last.
    [[noreturn]] void refuse(const std::string& cause) const;

private:
    using Kinds = std::uint8_t;  // kinds of characters, as bits

    int readToken(Kinds skipped, Kinds stops);
    bool readPlainToken(Kinds skipped, Kinds stops);
    int readWholeToken(Kinds skipped, Kinds stops);
    [[nodiscard]] std::string_view text() const;
    [[nodiscard]] std::string_view taken(TokenKind kind) const;
    [[nodiscard]] std::int32_t checkCount(std::int32_t count, std::size_t recordSize,
                                          std::string_view what) const;

    const LineReader& lines_;
    std::string_view rest_;
    std::string_view token_;
    const char* tokenStart_ = nullptr;
    std::string gathered_;  // a token that is not in one piece in the file
};

/// The most vertices that the assignment lines or groups of one file may name: a few characters
/// can ask for billions.
inline constexpr std::int64_t mostNamedVertices = std::int64_t{1} << 24U;

/// Reads a number n and then range items until n indices have been named, and hands each index to
/// `use`. `named` counts the indices of the whole file.
template <class Use>
void readNamedIndices(TokenReader& tokens, std::int64_t& named, Use use) {
    std::int64_t missing = tokens.wordNumber();
    if (missing < 0) {
        tokens.refuse("negative number of vertices");
    }
    while (missing > 0) {
        const IndexRange range = tokens.rangeItem();
        const std::int64_t number = std::int64_t{range.last} - range.first + 1;
        if (number > missing) {
            tokens.refuse("more vertices named than announced");
        }
        named += number;
        if (named > mostNamedVertices) {
            tokens.refuse("more than 16777216 vertices named");
        }
        missing -= number;
        for (std::int64_t index = range.first; index <= range.last; ++index) {
            use(index);
        }
    }
}

}  // namespace mqf2vxb
