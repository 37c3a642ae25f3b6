#include "vxbtool/model_text/text_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <utility>

#include "base/diagnostics.h"

namespace vxbtool::model_text {
namespace {

/// The most characters of a comment's line: a reader takes 255, and an editor shows 100.
constexpr std::size_t longestCommentLine = 96;

/// How much of the text makes the next line: up to a line feed, else up to the last blank that still
/// fits, else as much as a reader takes without cutting a character of several bytes.
std::size_t commentLineLength(std::string_view text) {
    const std::size_t whole = std::min(text.find('\n'), text.size());
    if (whole <= longestCommentLine) {
        return whole;
    }
    const std::size_t blank = text.substr(0, longestCommentLine + 1).rfind(' ');
    if (blank != std::string_view::npos && blank > 0) {
        return blank;
    }
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    std::size_t length = longestCommentLine;
    while (length > longestCommentLine - 4 && continues(text[length])) {
        --length;
    }
    return length;
}

}  // namespace

TextFile::TextFile(mqf2vxb::OutputFiles& files, std::string name)
    : name_(std::move(name)), file_(files.create(name_)) {
    if (!file_) {
        mqf2vxb::cannotOpen(name_, mqf2vxb::Access::write, errno);
    }
}

void TextFile::number(std::int64_t value) {
    std::array<char, 24> text{};
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    put({text.data(), end});
}

void TextFile::real(float value) {
    constexpr float plainBelow = 1e7F;
    constexpr float plainFrom = 1e-6F;
    const float size = std::fabs(value);
    std::array<char, 32> text{};
    char* const limit = text.data() + text.size();
    if (size == 0 || !std::isfinite(value)) {
        put("0");
    } else if (size >= plainFrom && size < plainBelow) {
        put({text.data(), std::to_chars(text.data(), limit, value, std::chars_format::fixed).ptr});
    } else {
        put({text.data(), std::to_chars(text.data(), limit, value).ptr});
    }
}

void TextFile::word(std::uint32_t value) {
    const auto byte = [value](unsigned shift) { return static_cast<char>(value >> shift & 0xFFU); };
    const std::array<char, 4> bytes{byte(0), byte(8), byte(16), byte(24)};
    put({bytes.data(), bytes.size()});
}

void TextFile::comment(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = commentLineLength(text);
        std::string line(text.substr(0, length));
        // A line feed would end the comment, and a NUL or a carriage return confuse editors.
        std::replace_if(
            line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; },
            ' ');
        put(line.empty() ? "#" : "# ");
        put(line);
        put("\n");
        text.remove_prefix(length);
        if (!text.empty() && (text.front() == '\n' || text.front() == ' ')) {
            text.remove_prefix(1);
        }
    }
}

void TextFile::flush() {
    if (!file_->write(buffer_)) {
        mqf2vxb::cannotWrite(name_, errno);
    }
    buffer_.clear();
}

void TextFile::close() {
    flush();
    if (!file_->close()) {
        mqf2vxb::cannotWrite(name_, errno);
    }
}

}  // namespace vxbtool::model_text
