#include "text/line_reader.h"

#include <algorithm>

namespace mqf2vxb {
namespace {

constexpr std::size_t tagSize = 4;

}  // namespace

LineReader::LineReader(Inputs& inputs, const std::string& fileName, std::string_view id)
    : inputs_(inputs), fileName_(fileName), contents_(inputs.open(fileName)) {
    readLine();
    checkId(id);
}

LineReader::~LineReader() {
    if (readAny_) {
        inputs_.lineBuffer.assign(line_);
        if (lineFeed_) {
            inputs_.lineBuffer.push_back('\n');
        }
    }
}

bool LineReader::readLine() {
    do {
        if (next_ == text().size()) {
            return false;
        }
        readRawLine();
    } while (!isDataLine());
    if (observer() != nullptr) {
        observer()->line(line_);
    }
    return true;
}

void LineReader::requireLine(std::string_view what) {
    if (!readLine()) {
        refuseEnd("the file ends before " + std::string(what));
    }
}

void LineReader::readRawLine() {
    // A line that fits ends within the window: no search ever runs through a long line twice.
    constexpr std::size_t lineEndSize = 2;
    const std::string_view rest = text().substr(next_, longestLine + lineEndSize);
    const std::size_t feed = rest.find('\n');
    lineFeed_ = feed != std::string_view::npos;
    line_ = rest.substr(0, feed);
    std::size_t taken = line_.size() + (lineFeed_ ? 1 : 0);
    if (lineFeed_ && line_.ends_with('\r')) {
        line_.remove_suffix(1);
    }

    // A line that leaves no room but for its line feed comes back whole; the line feed follows as
    // an empty line.
    part_ = cut_;
    cut_ = line_.size() > longestLine;
    part_ = part_ || cut_;
    if (line_.size() >= longestLine) {
        line_ = line_.substr(0, longestLine);
        lineFeed_ = false;
        taken = longestLine;
    }
    next_ += taken;
    readAny_ = true;
    const std::size_t nul = line_.find('\0');
    if (nul != std::string_view::npos) {
        line_ = line_.substr(0, nul);
        lineFeed_ = false;
    }
}

bool LineReader::isDataLine() const {
    for (const char c : line_) {
        if (c != ' ' && c != '\t') {
            return c != '#';
        }
    }
    return !lineFeed_;
}

void LineReader::checkId(std::string_view id) const {
    const std::string held = readAny_ ? lineWithEnd() : inputs_.lineBuffer;
    const std::string_view line = held;
    const std::string cause =
        readAny_ ? "the file does not begin with \"" + std::string(id) + "\"" : "the file is empty";
    if (line.substr(0, tagSize) != id.substr(0, tagSize)) {
        wrongTag(fileName_, line, cause);
    }
    if (line.substr(0, id.size()) != id) {
        wrongDate(fileName_, line, cause);
    }
}

std::string LineReader::lineWithEnd() const { return std::string(line_) + (lineFeed_ ? "\n" : ""); }

void LineReader::checkCount(std::int64_t count, std::size_t recordSize,
                            std::string_view what) const {
    if (count < 0) {
        refuseLine("negative number of " + std::string(what));
    }
    // The last record may end with the file instead of a line feed.
    if (static_cast<std::uint64_t>(count) > (rest().size() + 1) / recordSize) {
        refuseLine("more " + std::string(what) + " announced than the file can hold");
    }
}

void LineReader::refuseLine(const std::string& cause) const {
    notCorrectData({fileName_, lineNumber(line_.data())},
                   part_ ? "line longer than 255 characters" : cause);
}

void LineReader::refuseFile(const std::string& cause) const { notCorrectData({fileName_}, cause); }

void LineReader::refuseEnd(const std::string& cause) const {
    const std::int64_t last = lineNumber(text().data() + text().size());
    notCorrectData({fileName_}, cause, {"", {fileName_, last}});
}

std::int64_t LineReader::lineNumber(const char* place) const {
    return 1 + std::count(text().data(), place, '\n');
}

}  // namespace mqf2vxb
