#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace mqf2vxb {

/// How a token of a coordinate, group or mesh file was read.
enum class TokenKind : std::uint8_t { restOfLine, word, item, range };

/// Sees what the readers take from the text files while they read them, for tools that tell an
/// author more than whether a model converts. Views and places lie inside the text of the file that
/// is being read; only a token's text is a copy.
class InputObserver {
public:
    InputObserver() = default;
    InputObserver(const InputObserver&) = delete;
    InputObserver& operator=(const InputObserver&) = delete;
    virtual ~InputObserver() = default;

    /// A file was opened, which may be an image: the calls that follow are about it.
    virtual void opened(const std::string& name, std::string_view contents) = 0;
    /// The reader went to its next data line; the ID line is the first.
    virtual void line(std::string_view line) = 0;
    /// The formatted scan of the current line ended: whether it met all its fields, and the rest
    /// of the line behind them.
    virtual void scanned(bool complete, std::string_view rest) = 0;
    /// A token was taken that begins at `start`; of a range, its first part.
    virtual void token(TokenKind kind, const char* start, std::string_view text) = 0;
    /// The token, or the next part of a range, counts as this number; `rest` follows its digits.
    virtual void number(std::int32_t value, std::string_view rest) = 0;
    /// The reader of tokens is done and leaves what follows from here on unread.
    virtual void unread(const char* rest) = 0;
};

}  // namespace mqf2vxb
