#include "vxbtool/shared/printable.h"

#include <algorithm>
#include <cstddef>

namespace vxbtool {
namespace {

unsigned byteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
}

/// The length of the character of several bytes that the text begins with; 0 for anything else.
std::size_t multibyteLength(std::string_view text) {
    constexpr unsigned continuationMask = 0xC0;
    constexpr unsigned continuation = 0x80;
    const unsigned first = byteAt(text, 0);
    std::size_t length = 0;
    if (first >= 0xC2 && first < 0xE0) {
        length = 2;
    } else if (first >= 0xE0 && first < 0xF0) {
        length = 3;
    } else if (first >= 0xF0 && first < 0xF5) {
        length = 4;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & continuationMask) != continuation) {
            return 0;
        }
    }
    return length;
}

/// Whether a code or byte is one of the control characters behind ASCII.
bool isHighControl(unsigned code) { return code >= 0x80 && code < 0xA0; }

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const unsigned byte = byteAt(text, 0);
        const std::size_t length = std::max<std::size_t>(multibyteLength(text), 1);
        const bool control =
            length == 1 ? (byte < ' ' && byte != '\t') || byte == 0x7F || isHighControl(byte)
                        : byte == 0xC2 && isHighControl(byteAt(text, 1));
        if (control) {
            result += '?';
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string printableLines(std::string_view text) {
    std::string result;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        std::string_view line = text.substr(0, end);
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        result += printable(line) + '\n';
        text.remove_prefix(end + 1);
    }
    return result + printable(text);
}

}  // namespace vxbtool
