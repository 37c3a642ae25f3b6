#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "driver/line_reader.h"

namespace mqf2vxb {

/// What scanning one number met.
enum class Scanned : std::uint8_t { number, nothing, outOfRange };

/// The scanners below mean what the C library's "%d", "%x" and "%f" mean: white space before the
/// number is skipped, a prefix that is a number counts, and what follows it stays in `text`.
/// Without a number `value` is left alone.
Scanned scanInteger(std::string_view& text, std::int32_t& value);
/// With or without a sign and "0x".
Scanned scanHex(std::string_view& text, std::uint32_t& value);
/// Decimal and hexadecimal numbers, "inf" and "nan"; a number too large is an infinity, one too
/// small 0. Never out of range.
Scanned scanReal(std::string_view& text, float& value);

/// White space of the C library's formats, which includes more than blank and tab.
void skipSpace(std::string_view& text);
/// The next run of characters without white space ("%s"); empty at the end.
std::string_view scanWord(std::string_view& text);

/// Fields of scanLine that need more than their type.
struct Hex {
    std::uint32_t& value;
};
struct Word {
    std::string& value;
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
    bool scan(std::int32_t& value);
    bool scan(float& value);
    bool scan(Hex hex);
    bool scan(Word word);
    bool scan(Letter letter);
    bool scan(Literal literal);
    bool scan(HexNumber number);

    /// Ends the scan: a part of a longer line that does not hold all its fields whole is refused.
    void finish() const;
    [[nodiscard]] bool complete() const { return !failed_; }
    [[nodiscard]] std::string_view rest() const { return rest_; }

private:
    bool take(Scanned scanned);

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
    return scanner.complete();
}

}  // namespace mqf2vxb
