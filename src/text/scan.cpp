#include "text/scan.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace mqf2vxb {
namespace {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

/// Takes a sign; true when it is a minus.
bool takeSign(std::string_view& text) {
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return minus;
}

bool startsWithHexPrefix(std::string_view text) {
    return text.size() > 1 && text[0] == '0' && lower(text[1]) == 'x';
}

/// The hexadecimal number that `text`, what follows a "0x", begins with; empty without a digit.
std::string_view hexNumber(std::string_view text) {
    std::size_t size = 0;
    const auto takeDigits = [&](auto isOne) {
        const std::size_t first = size;
        while (size < text.size() && isOne(text[size])) {
            ++size;
        }
        return size - first;
    };
    const auto isHexDigit = [](char c) { return hexDigit(c) >= 0; };
    std::size_t digits = takeDigits(isHexDigit);
    if (text.substr(size).starts_with('.')) {
        ++size;
        digits += takeDigits(isHexDigit);
    }
    if (digits == 0) {
        return {};
    }
    const std::size_t mantissa = size;
    if (size < text.size() && lower(text[size]) == 'p') {
        ++size;
        if (size < text.size() && (text[size] == '-' || text[size] == '+')) {
            ++size;
        }
        if (takeDigits(isDigit) == 0) {
            size = mantissa;
        }
    }
    return text.substr(0, size);
}

/// The power of ten, or of two for a hexadecimal number, that the number's first digit other than
/// 0 stands for; far beyond any float when it is large. The number has such a digit.
long leadingExponent(std::string_view number, bool hex) {
    constexpr long bitsOfHexDigit = 4;
    long exponent = 0;
    bool inFraction = false;
    bool found = false;
    std::size_t i = 0;
    const auto isOne = [&](char c) { return hex ? hexDigit(c) >= 0 : isDigit(c); };
    for (; i < number.size() && (isOne(number[i]) || number[i] == '.'); ++i) {
        if (number[i] == '.') {
            inFraction = true;
            continue;
        }
        exponent += found && !inFraction ? 1 : 0;
        exponent -= !found && inFraction ? 1 : 0;
        found = found || number[i] != '0';
    }
    exponent *= hex ? bitsOfHexDigit : 1;
    if (i + 1 < number.size()) {
        std::string_view digits = number.substr(i + 1);
        constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
        std::int32_t written = digits.starts_with('-') ? -huge : huge;  // unless it fits 32 bits
        scanInteger(digits, written);
        exponent += written;
    }
    return exponent;
}

}  // namespace

std::string_view scanWord(std::string_view& text) {
    skipSpace(text);
    std::size_t size = 0;
    while (size < text.size() && !isSpace(text[size])) {
        ++size;
    }
    const std::string_view word = text.substr(0, size);
    text.remove_prefix(size);
    return word;
}

Scanned scanHex(std::string_view& text, std::uint32_t& value) {
    skipSpace(text);
    std::string_view rest = text;
    const bool minus = takeSign(rest);
    if (startsWithHexPrefix(rest) && rest.size() > 2 && hexDigit(rest[2]) >= 0) {
        rest.remove_prefix(2);
    }
    constexpr std::uint64_t tooLarge = std::uint64_t{1} << 32U;
    constexpr std::uint64_t mostNegative = 0x80000000U;
    std::uint64_t magnitude = 0;
    std::size_t digits = 0;
    for (; digits < rest.size() && hexDigit(rest[digits]) >= 0; ++digits) {
        magnitude =
            std::min(16 * magnitude + static_cast<std::uint64_t>(hexDigit(rest[digits])), tooLarge);
    }
    if (digits == 0) {
        return Scanned::nothing;
    }
    text = rest.substr(digits);
    if (magnitude >= tooLarge || (minus && magnitude > mostNegative)) {
        return Scanned::outOfRange;
    }
    value = static_cast<std::uint32_t>(minus ? 0 - magnitude : magnitude);
    return Scanned::number;
}

Scanned scanReal(std::string_view& text, float& value) {
    skipSpace(text);
    std::string_view number = text;
    const bool minus = takeSign(number);
    if (number.starts_with('-') || number.starts_with('+')) {
        return Scanned::nothing;
    }
    const std::string_view hexPart =
        startsWithHexPrefix(number) ? hexNumber(number.substr(2)) : std::string_view();
    const bool hex = !hexPart.empty();
    const std::string_view source = hex ? hexPart : number;
    float magnitude = 0;
    const std::from_chars_result result =
        std::from_chars(source.data(), source.data() + source.size(), magnitude,
                        hex ? std::chars_format::hex : std::chars_format::general);
    if (result.ec == std::errc::invalid_argument) {
        return Scanned::nothing;
    }
    const std::string_view taken =
        source.substr(0, static_cast<std::size_t>(result.ptr - source.data()));
    if (result.ec == std::errc::result_out_of_range) {
        const bool large = leadingExponent(taken, hex) > 0;
        magnitude = large ? std::numeric_limits<float>::infinity() : 0.0F;
    }
    value = minus ? -magnitude : magnitude;
    text = {taken.data() + taken.size(), text.data() + text.size()};
    return Scanned::number;
}

void LineScanner::missing(Scanned scanned) {
    if (scanned == Scanned::outOfRange) {
        reader_.refuseLine("number does not fit 32 bits");
    }
    failed_ = true;
}

bool LineScanner::scan(Hex hex) { return !failed_ && take(scanHex(rest_, hex.value)); }

bool LineScanner::scan(Word word) {
    std::string_view found;
    if (scan(WordView{found})) {
        word.value = found;
    }
    return !failed_;
}

bool LineScanner::scan(WordView word) {
    if (failed_) {
        return false;
    }
    const std::string_view found = scanWord(rest_);
    failed_ = found.empty();
    if (!failed_) {
        word.value = found;
    }
    return !failed_;
}

bool LineScanner::scan(Letter letter) {
    if (failed_) {
        return false;
    }
    skipSpace(rest_);
    failed_ = rest_.empty();
    if (!failed_) {
        letter.value = rest_.front();
        rest_.remove_prefix(1);
    }
    return !failed_;
}

bool LineScanner::scan(Literal literal) {
    failed_ = failed_ || !rest_.starts_with(literal.text);
    if (!failed_) {
        rest_.remove_prefix(literal.text.size());
    }
    return !failed_;
}

bool LineScanner::scan(HexNumber number) {
    if (!failed_) {
        skipSpace(rest_);
    }
    return scan(Literal{"0x"}) && scan(Hex{number.value});
}

void LineScanner::finishSpecial() const {
    const bool touchesCut = reader_.isCut() && rest_.empty();
    if (reader_.isPart() && (failed_ || touchesCut)) {
        reader_.refuseLine("line longer than 255 characters");
    }
    if (InputObserver* observer = reader_.observer()) {
        observer->scanned(!failed_, rest_);
    }
}

}  // namespace mqf2vxb
