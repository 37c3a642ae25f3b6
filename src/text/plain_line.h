#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "text/line_reader.h"
#include "text/scan.h"

namespace mqf2vxb {

/// Scans a line in the form in which programs write lines: numbers of up to seven digits with blanks
/// between them, and the line feed right behind the last field. The end of such a line needs no
/// search of its own, and its place stays in a register. A line that it accepts has the same values
/// in the general scan; every other line is left to that.
class PlainLine {
public:
    /// Looks at the line behind the reader's current one.
    explicit PlainLine(const LineReader& reader)
        : start_(std::endian::native == std::endian::little ? reader.wholeLine().get() : nullptr),
          at_(start_) {}

    /// False when no line can be scanned this way.
    [[nodiscard]] explicit operator bool() const { return start_ != nullptr; }

    // Each scans the next field; false when it is not there in its plain form.

    bool scan(std::int32_t& value) {
        skipBlanks();
        if (*at_ == '-') [[unlikely]] {
            at_ = scanNegative(at_, value);
            return isDigit(at_[-1]) && !isDigit(*at_);
        }
        std::uint64_t magnitude = 0;
        const bool found = takeDigits(magnitude);
        value = static_cast<std::int32_t>(magnitude);
        return found;
    }
    bool scan(std::span<std::int32_t> values) {
        for (std::int32_t& value : values) {
            if (!scan(value)) {
                return false;
            }
        }
        return true;
    }
    bool scan(float& value);
    bool scan(Hex hex);
    bool scan(Letter letter) {
        skipBlanks();
        letter.value = *at_;
        return *at_++ > ' ';
    }
    bool scan(WordView word) {
        skipBlanks();
        const std::size_t size = takeWord(word.value);
        return size != 0 && size <= longestName && isSpace(*at_);
    }
    bool scan(Literal literal) {
        return std::all_of(literal.text.begin(), literal.text.end(),
                           [this](char c) { return *at_++ == c; });
    }
    /// A word of seven characters and the blank behind it.
    bool scan(std::array<char, 8>& characters) {
        static_assert(sizeof characters <= PaddedPlace::padding);
        skipBlanks();
        std::memcpy(characters.data(), at_, sizeof characters);
        at_ += sizeof characters;
        // The line may end among them; what follows it must not be taken for a part of it.
        return characters.back() == ' ' && std::all_of(characters.begin(), characters.end() - 1,
                                                       [](char c) { return c > ' '; });
    }
    bool scan(HexNumber number) {
        skipBlanks();
        return scan(Literal{"0x"}) && scan(Hex{number.value});
    }
    /// The next characters up to a blank; they begin with a digit.
    bool scanNumberWord(std::string_view& word);
    /// A blank follows, or the line ends.
    [[nodiscard]] bool atBlankOrEnd() const { return *at_ == ' ' || *at_ == '\n'; }

    /// Makes the line the reader's current one when it ends here.
    bool finish(LineReader& reader) {
        const char* const feed = at_ + (*at_ == '\r' ? 1 : 0);
        return *feed == '\n' && reader.takeWholeLine(feed);
    }

private:
    // Loops use a copy of the place: a character may alias the place itself, so that the compiler
    // would otherwise store it at every step.

    void skipBlanks() {
        const char* at = at_;
        while (*at == ' ') {
            ++at;
        }
        at_ = at;
    }
    std::size_t takeWord(std::string_view& word) {
        const char* at = at_;
        while (*at > ' ') {
            ++at;
        }
        word = {at_, at};
        at_ = at;
        return word.size();
    }
    /// Scans a minus and one to seven digits; returns the end, which is behind a digit when they
    /// are there.
    [[gnu::noinline]] static const char* scanNegative(const char* at, std::int32_t& value) {
        std::uint64_t magnitude = 0;
        const std::size_t count = scanSevenDigits(at + 1, magnitude);
        value = -static_cast<std::int32_t>(magnitude);
        return at + 1 + count;
    }
    bool takeMinus() {
        const bool minus = *at_ == '-';
        at_ += minus ? 1 : 0;
        return minus;
    }
    /// Takes one to seven digits.
    bool takeDigits(std::uint64_t& value) {
        const std::size_t count = scanSevenDigits(at_, value);
        at_ += count;
        return count != 0 && (count < 7 || !isDigit(*at_));
    }

    const char* start_;
    const char* at_;
};

/// Goes to the next line when its fields can be scanned in their plain form, in this order; false,
/// and the reader stays where it is, when they cannot.
template <class... Field>
bool takePlainLine(LineReader& reader, Field&&... field) {
    PlainLine plain(reader);
    return plain && (plain.scan(field) && ...) && plain.finish(reader);
}

/// Goes to the next data line, which `what` names when the file ends before it, and scans its
/// fields as scanLine does.
template <class... Field>
void requireFields(LineReader& reader, std::string_view what, Field&&... field) {
    if (takePlainLine(reader, field...)) [[likely]] {
        return;
    }
    reader.requireLine(what);
    scanLine(reader, field...);
}

inline bool PlainLine::scan(float& value) {
    skipBlanks();
    const bool minus = takeMinus();
    std::uint64_t whole = 0;
    std::uint64_t fraction = 0;
    std::size_t places = 0;
    if (!takeDigits(whole)) {
        return false;
    }
    if (*at_ == '.') {
        const char* const digits = ++at_;
        if (!takeDigits(fraction)) {
            return false;
        }
        places = static_cast<std::size_t>(at_ - digits);
    }
    // The number is n / 10^p with p at most 7. Both are exact in a double, so their quotient is
    // rounded once, and the conversion to a float rounds it again. Together they could miss the
    // nearest float only beside a middle of two floats, which is k / 2^j with k below 2^25. But a
    // number that is not this middle differs from it by at least 1 / (10^p 2^j), more than
    // 2^-24 / 2^j, and the quotient is rounded by no more than 2^-28 / 2^j: it stays on its side.
    constexpr std::array<double, 8> powers{1E0, 1E1, 1E2, 1E3, 1E4, 1E5, 1E6, 1E7};
    const double power = powers[places];
    const double magnitude =
        (static_cast<double>(whole) * power + static_cast<double>(fraction)) / power;
    value = static_cast<float>(minus ? -magnitude : magnitude);
    return true;
}

inline bool PlainLine::scan(Hex hex) {
    skipBlanks();
    constexpr std::ptrdiff_t most = 8;
    const char* const digits = at_;
    const char* at = digits;
    std::uint32_t value = 0;
    for (int digit = hexDigit(*at); digit >= 0; digit = hexDigit(*++at)) {
        value = value << 4U | static_cast<std::uint32_t>(digit);
    }
    hex.value = value;
    at_ = at;
    return at - digits - 1 < most && at != digits;
}

inline bool PlainLine::scanNumberWord(std::string_view& word) {
    if (!isDigit(*at_)) {
        return false;
    }
    takeWord(word);
    return *at_ == ' ';
}

}  // namespace mqf2vxb
