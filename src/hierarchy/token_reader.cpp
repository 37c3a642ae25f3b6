#include "hierarchy/token_reader.h"

#include "driver/scan.h"

namespace mqf2vxb {
namespace {

constexpr std::string_view wordSeparators = " \t\n";
constexpr std::string_view itemSeparators = " \t\n,";
constexpr std::string_view rangeStops = " \t\n,-";

bool contains(std::string_view characters, int c) {
    return characters.find(static_cast<char>(c)) != std::string_view::npos;
}

}  // namespace

int TokenReader::readChar() {
    while (rest_.starts_with('#')) {
        const std::size_t feed = rest_.find('\n');
        if (feed == std::string_view::npos) {
            lines_.refuseFile("the file ends inside a comment");
        }
        rest_.remove_prefix(feed + 1);
    }
    if (rest_.starts_with("\r\n")) {
        rest_.remove_prefix(1);
    }
    if (rest_.empty()) {
        return endOfFile;
    }
    const int c = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return c;
}

void TokenReader::skipPast(char wanted) {
    for (int c = readChar(); c != static_cast<unsigned char>(wanted); c = readChar()) {
        if (c == endOfFile) {
            lines_.refuseFile(std::string("the file ends before a '") + wanted + "'");
        }
    }
}

/// Reads into the token up to one of `stops`, which is returned, or the end of the file.
int TokenReader::readToken(std::string_view skipped, std::string_view stops) {
    token_.clear();
    int c = readChar();
    while (c != endOfFile && contains(skipped, c)) {
        c = readChar();
    }
    tokenStart_ = rest_.data() - (c == endOfFile ? 0 : 1);
    while (c != endOfFile && !contains(stops, c)) {
        if (token_.size() == longestName) {
            refuse("text longer than 255 characters");
        }
        token_.push_back(static_cast<char>(c));
        c = readChar();
    }
    return c;
}

/// A token whose first character the file has to hold; the end of the file may end it.
int TokenReader::readWholeToken(std::string_view skipped, std::string_view stops) {
    const int stop = readToken(skipped, stops);
    if (stop == endOfFile && token_.empty()) {
        lines_.refuseFile("the file ends before it is complete");
    }
    return stop;
}

std::string_view TokenReader::text() const {
    return std::string_view(token_).substr(0, token_.find('\0'));
}

/// The token read last, which an observer hears of.
std::string_view TokenReader::taken(TokenKind kind) const {
    if (InputObserver* observer = lines_.observer()) {
        observer->token(kind, tokenStart_, text());
    }
    return text();
}

std::string_view TokenReader::restOfLine() {
    readWholeToken({}, "\n");
    return taken(TokenKind::restOfLine);
}

std::string_view TokenReader::word() {
    readWholeToken(wordSeparators, wordSeparators);
    return taken(TokenKind::word);
}

std::optional<std::string_view> TokenReader::checkedWord() {
    if (readToken(wordSeparators, wordSeparators) == endOfFile) {
        if (InputObserver* observer = lines_.observer()) {
            observer->unread(tokenStart_);
        }
        return std::nullopt;
    }
    return taken(TokenKind::word);
}

std::string_view TokenReader::item() {
    readWholeToken(itemSeparators, itemSeparators);
    return taken(TokenKind::item);
}

IndexRange TokenReader::rangeItem() {
    const int stop = readWholeToken(itemSeparators, rangeStops);
    if (stop == '-' && token_.empty()) {
        refuse("range without a first number");
    }
    IndexRange range{};
    range.first = number(taken(TokenKind::range));
    range.last = range.first;
    if (stop == '-') {
        readWholeToken(itemSeparators, itemSeparators);
        range.last = number(text());
    }
    if (range.last < range.first) {
        refuse("range " + std::to_string(range.first) + "-" + std::to_string(range.last) +
               " runs backwards");
    }
    return range;
}

std::int32_t TokenReader::number(std::string_view token) const {
    std::int32_t value = 0;
    if (scanInteger(token, value) == Scanned::outOfRange) {
        refuse("number does not fit 32 bits");
    }
    if (InputObserver* observer = lines_.observer()) {
        observer->number(value, token);
    }
    return value;
}

std::int32_t TokenReader::restOfLineCount(std::size_t recordSize, const std::string& what) {
    return checkCount(number(restOfLine()), recordSize, what);
}

std::int32_t TokenReader::wordCount(std::size_t recordSize, const std::string& what) {
    return checkCount(number(word()), recordSize, what);
}

std::int32_t TokenReader::checkCount(std::int32_t count, std::size_t recordSize,
                                     const std::string& what) const {
    if (count < 0) {
        refuse("negative number of " + what);
    }
    // The last record may end with the file instead of a separator.
    if (static_cast<std::size_t>(count) > (rest_.size() + 1) / recordSize) {
        refuse("more " + what + " announced than the file can hold");
    }
    return count;
}

void TokenReader::finish() const {
    if (InputObserver* observer = lines_.observer()) {
        observer->unread(rest_.data());
    }
}

void TokenReader::refuse(const std::string& cause) const {
    notCorrectData({lines_.fileName(), lines_.lineNumber(tokenStart_)}, cause);
}

}  // namespace mqf2vxb
