#include "text/token_reader.h"

#include <array>

#include "text/scan.h"

namespace mqf2vxb {
namespace {

using Kinds = std::uint8_t;
constexpr Kinds none = 0;
constexpr Kinds lineFeed = 1;
constexpr Kinds blank = 2;
constexpr Kinds comma = 4;
constexpr Kinds dash = 8;
/// Characters that need a look at what follows: they may start a comment or a line end, or stand
/// behind the text.
constexpr Kinds special = 16;

constexpr Kinds wordSeparators = lineFeed | blank;
constexpr Kinds itemSeparators = wordSeparators | comma;
constexpr Kinds rangeStops = itemSeparators | dash;

constexpr std::array<Kinds, 256> kindTable = [] {
    std::array<Kinds, 256> kinds{};
    kinds['\n'] = lineFeed;
    kinds[' '] = kinds['\t'] = blank;
    kinds[','] = comma;
    kinds['-'] = dash;
    kinds['#'] = kinds['\r'] = kinds['\0'] = special;
    return kinds;
}();

bool isOne(char c, Kinds kinds) { return (kindTable[static_cast<unsigned char>(c)] & kinds) != 0; }

}  // namespace

int TokenReader::readChar() {
    while (rest_.starts_with('#')) {
        const std::size_t feed = rest_.find('\n');
        if (feed == std::string_view::npos) {
            lines_.refuseEnd("the file ends inside a comment");
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
            lines_.refuseEnd(std::string("the file ends before a '") + wanted + "'");
        }
    }
}

/// Reads the token up to one of `stops`, which is returned, or the end of the file.
int TokenReader::readToken(Kinds skipped, Kinds stops) {
    if (readPlainToken(skipped, stops)) {
        return static_cast<unsigned char>(*(rest_.data() - 1));
    }
    gathered_.clear();
    int c = readChar();
    while (c != endOfFile && isOne(static_cast<char>(c), skipped)) {
        c = readChar();
    }
    tokenStart_ = rest_.data() - (c == endOfFile ? 0 : 1);
    while (c != endOfFile && !isOne(static_cast<char>(c), stops)) {
        if (gathered_.size() == longestName) {
            refuse("text longer than 255 characters");
        }
        gathered_.push_back(static_cast<char>(c));
        c = readChar();
    }
    token_ = gathered_;
    return c;
}

/// Reads the token and its stop where they stand in one piece, as nearly all do: several times as
/// fast as going by characters. False without having read anything when they do not.
bool TokenReader::readPlainToken(Kinds skipped, Kinds stops) {
    const char* at = rest_.data();
    while (isOne(*at, skipped)) {
        ++at;
    }
    const char* const start = at;
    while (!isOne(*at, stops | special)) {
        ++at;
    }
    token_ = {start, at};
    tokenStart_ = start;
    if (isOne(*at, special) || token_.size() > longestName) {
        return false;
    }
    rest_.remove_prefix(static_cast<std::size_t>(at + 1 - rest_.data()));
    return true;
}

/// A token whose first character the file has to hold; the end of the file may end it.
int TokenReader::readWholeToken(Kinds skipped, Kinds stops) {
    const int stop = readToken(skipped, stops);
    if (stop == endOfFile && token_.empty()) {
        lines_.refuseEnd("the file ends before it is complete");
    }
    return stop;
}

std::string_view TokenReader::text() const { return token_.substr(0, token_.find('\0')); }

/// The token read last, which an observer hears of.
std::string_view TokenReader::taken(TokenKind kind) const {
    if (InputObserver* observer = lines_.observer()) {
        observer->token(kind, tokenStart_, text());
    }
    return text();
}

std::string_view TokenReader::restOfLine() {
    readWholeToken(none, lineFeed);
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
    std::string_view rest = token;
    if (scanNineDigits(rest, value) && rest.empty() && lines_.observer() == nullptr) {
        return value;
    }
    value = 0;
    if (scanInteger(token, value) == Scanned::outOfRange) {
        refuse("number does not fit 32 bits");
    }
    if (InputObserver* observer = lines_.observer()) {
        observer->number(value, token);
    }
    return value;
}

std::int32_t TokenReader::restOfLineCount(std::size_t recordSize, std::string_view what) {
    return checkCount(number(restOfLine()), recordSize, what);
}

std::int32_t TokenReader::wordCount(std::size_t recordSize, std::string_view what) {
    return checkCount(number(word()), recordSize, what);
}

std::int32_t TokenReader::checkCount(std::int32_t count, std::size_t recordSize,
                                     std::string_view what) const {
    if (count < 0) {
        refuse("negative number of " + std::string(what));
    }
    if (static_cast<std::size_t>(count) > mostRecords(recordSize)) {
        refuse("more " + std::string(what) + " announced than the file can hold");
    }
    return count;
}

void TokenReader::finish() const {
    if (InputObserver* observer = lines_.observer()) {
        observer->unread(rest_.data());
    }
}

Place TokenReader::place() const { return {lines_.fileName(), lines_.lineNumber(tokenStart_)}; }

void TokenReader::refuse(const std::string& cause) const { notCorrectData(place(), cause); }

}  // namespace mqf2vxb
