#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "text/line_reader.h"

namespace mqf2vxb {

constexpr bool isBlank(char c) { return c == ' ' || c == '\t'; }
/// White space of the C library's formats.
constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What scanning one number met.
enum class Scanned : std::uint8_t { number, nothing, outOfRange };

/// The scanners below mean what the C library's "%d", "%x" and "%f" mean: white space before the
/// number is skipped, a prefix that is a number counts, and what follows it stays in `text`.
/// Without a number `value` is left alone.
inline Scanned scanInteger(std::string_view& text, std::int32_t& value);
/// With or without a sign and "0x".
Scanned scanHex(std::string_view& text, std::uint32_t& value);
/// Decimal and hexadecimal numbers, "inf" and "nan"; a number too large is an infinity, one too
/// small 0. Never out of range.
Scanned scanReal(std::string_view& text, float& value);

inline void skipSpace(std::string_view& text);
/// The next run of characters without white space ("%s"); empty at the end.
std::string_view scanWord(std::string_view& text);

/// Fields of scanLine that need more than their type.
struct Hex {
    std::uint32_t& value;
};
struct Word {
    std::string& value;
};
/// A word where it stands in the file.
struct WordView {
    std::string_view& value;
};
/// The next character that is not white space.
struct Letter {
    char& value;
};
struct Literal {
    std::string_view text;
};
/// A hexadecimal number behind an obligatory "0x".
struct HexNumber {
    std::uint32_t& value;
};

/// Formatted scanning of a reader's current line.
class LineScanner {
public:
    explicit LineScanner(const LineReader& reader) : LineScanner(reader, reader.line()) {}
    /// Starts at `rest`, the end of the reader's current line.
    LineScanner(const LineReader& reader, std::string_view rest) : reader_(reader), rest_(rest) {}

    /// Scans the next field; false when it is not there, and from then on for every field.
    bool scan(std::int32_t& value) { return !failed_ && take(scanInteger(rest_, value)); }
    bool scan(float& value) { return !failed_ && take(scanReal(rest_, value)); }
    /// The numbers of a list, up to the first that is not there.
    bool scan(std::span<std::int32_t> values);
    bool scan(Hex hex);
    bool scan(Word word);
    bool scan(WordView word);
    bool scan(Letter letter);
    bool scan(Literal literal);
    bool scan(HexNumber number);

    /// Ends the scan: a part of a longer line that does not hold all its fields whole is refused.
    void finish() const {
        if (reader_.isSpecial()) [[unlikely]] {
            finishSpecial();
        }
    }
    /// A field was not there.
    [[nodiscard]] bool failed() const { return failed_; }
    [[nodiscard]] std::string_view rest() const { return rest_; }
    /// A blank follows, or the line ends.
    [[nodiscard]] bool atBlankOrEnd() const { return rest_.empty() || isBlank(rest_.front()); }

private:
    bool take(Scanned scanned) {
        if (scanned != Scanned::number) [[unlikely]] {
            missing(scanned);
        }
        return !failed_;
    }
    void missing(Scanned scanned);

    void finishSpecial() const;

    const LineReader& reader_;
    std::string_view rest_;
    bool failed_ = false;
};

/// Scans the fields of the current line in order, up to the first that is not there; the others
/// keep what they held. True when all were there. A number that does not fit its 32 bits is
/// refused.
template <class... Field>
bool scanLine(const LineReader& reader, Field&&... field) {
    LineScanner scanner(reader);
    (scanner.scan(field) && ...);
    scanner.finish();
    return !scanner.failed();
}

// Most of a conversion is the reading of whole numbers: they are scanned in place.

/// The value of a hexadecimal digit; -1 when it is none.
constexpr int hexDigit(char c) {
    const char letter = static_cast<char>(c | ' ');
    return isDigit(c) ? c - '0' : letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

inline void skipSpace(std::string_view& text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && isSpace(*at)) {
        ++at;
    }
    text = {at, end};
}

/// Takes one to nine digits from the start of the text, as nearly every number has them; false when
/// there are none or more.
inline bool scanNineDigits(std::string_view& text, std::int32_t& value) {
    constexpr std::size_t most = 9;
    std::size_t count = 0;
    value = 0;
    while (count < text.size() && count < most && isDigit(text[count])) {
        value = 10 * value + (text[count++] - '0');
    }
    text.remove_prefix(count);
    return count != 0 && (text.empty() || !isDigit(text.front()));
}

/// The digits at the start of eight characters, the first seven at most, without a branch for
/// each, since a processor predicts the lengths of numbers badly.
inline std::size_t scanSevenDigits(const char* text, std::uint64_t& value) {
    std::uint64_t chunk = 0;
    std::memcpy(&chunk, text, sizeof chunk);
    const std::uint64_t digits = chunk ^ 0x3030303030303030U;
    // Bit 7 of each byte that is no digit, and of the last.
    constexpr std::uint64_t last = 0x8000000000000000U;
    const std::uint64_t others =
        ((digits | (digits + 0x7676767676767676U)) & 0x8080808080808080U) | last;
    const auto firstOther = static_cast<unsigned>(std::countr_zero(others));
    // The digits go to the end of the chunk, behind zeros, and are then added up in pairs.
    std::uint64_t sum = digits << 8U << (63 - firstOther);
    sum = (sum * 10 + (sum >> 8U)) & 0x00FF00FF00FF00FFU;
    sum = (sum * 100 + (sum >> 16U)) & 0x0000FFFF0000FFFFU;
    value = (sum * 10000 + (sum >> 32U)) & 0xFFFFFFFFU;
    return firstOther / 8;
}

[[gnu::always_inline]] inline Scanned scanInteger(std::string_view& text, std::int32_t& value) {
    skipSpace(text);
    const char* at = text.data();
    const char* const end = at + text.size();
    const bool minus = at != end && *at == '-';
    at += minus || (at != end && *at == '+') ? 1 : 0;
    const char* const digits = at;
    std::uint64_t magnitude = 0;
    bool more = true;
    if (end - at >= 8 && std::endian::native == std::endian::little) {
        const std::size_t count = scanSevenDigits(at, magnitude);
        at += count;
        more = count == 7;
    }
    if (more) {
        constexpr std::uint64_t tooLarge = std::uint64_t{1} << 32U;
        for (; at != end && isDigit(*at); ++at) {
            magnitude = std::min(10 * magnitude + static_cast<std::uint64_t>(*at - '0'), tooLarge);
        }
    }
    if (at == digits) {
        return Scanned::nothing;
    }
    text = {at, end};
    const auto number =
        minus ? -static_cast<std::int64_t>(magnitude) : static_cast<std::int64_t>(magnitude);
    if (number != static_cast<std::int32_t>(number)) {
        return Scanned::outOfRange;
    }
    value = static_cast<std::int32_t>(number);
    return Scanned::number;
}

inline bool LineScanner::scan(std::span<std::int32_t> values) {
    if (failed_) {
        return false;
    }
    // Copies, so that they stay in registers.
    std::string_view rest = rest_;
    Scanned scanned = Scanned::number;
    for (std::size_t i = 0; i < values.size() && scanned == Scanned::number; ++i) {
        scanned = scanInteger(rest, values[i]);
    }
    rest_ = rest;
    return take(scanned);
}

}  // namespace mqf2vxb
