#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/diagnostics.h"
#include "files/inputs.h"

namespace mqf2vxb {

/// Does a part of the reading. A failure that knows no line is given the one that `reader` is at.
template <class Reader, class Work>
void withPlace(const Reader& reader, Work work) {
    try {
        work();
    } catch (Report& report) {
        if (report.place().line == 0 && report.place().file.empty()) {
            report.explain({{}, reader.place()});
        }
        throw;
    }
}

/// Reads the data lines of one text file, past comments and empty lines.
class LineReader {
public:
    /// Opens the file and checks that it begins with the ID line `id`.
    LineReader(Inputs& inputs, const std::string& fileName, std::string_view id);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Goes to the next data line; false at the end of the file.
    bool readLine();
    /// Goes to the next data line; a file that ends before it is refused. `what` names the line.
    void requireLine(std::string_view what);

    /// The current line without its line feed. A longer line than 255 characters comes in parts.
    [[nodiscard]] std::string_view line() const { return line_; }
    /// The current line is a part of a longer one.
    [[nodiscard]] bool isPart() const { return part_; }
    /// The longer line goes on behind the current part.
    [[nodiscard]] bool isCut() const { return cut_; }

    /// The scan of the current line has more to do at its end: the line is a part of a longer one,
    /// or there is an observer.
    [[nodiscard]] bool isSpecial() const { return part_ || observer() != nullptr; }
    [[nodiscard]] InputObserver* observer() const { return inputs_.observer(); }

    // A scan that finds the end of its line by itself takes the next line with these two.

    /// The start of the next line, whatever line that is. No place when the line may not be taken
    /// whole: when it is a part of a longer one, or there is an observer.
    [[nodiscard]] PaddedPlace wholeLine() const {
        return cut_ || observer() != nullptr ? PaddedPlace() : contents_.place(next_);
    }
    /// Makes the data line from wholeLine() to this line feed the current one; false when it is
    /// too long for one line.
    bool takeWholeLine(const char* feed) {
        const char* const start = text().data() + next_;
        const auto size = static_cast<std::size_t>(feed - start) + 1;
        if (size > longestLine) {
            return false;
        }
        line_ = {start, feed - (feed != start && feed[-1] == '\r' ? 1 : 0)};
        lineFeed_ = true;
        part_ = false;
        next_ += size;
        return true;
    }

    /// Refuses a count that is negative, or larger than the rest of the file can hold when each
    /// record takes at least `recordSize` characters.
    void checkCount(std::int64_t count, std::size_t recordSize, std::string_view what) const;

    /// Refuses the current line.
    [[noreturn]] void refuseLine(const std::string& cause) const;
    /// Refuses the file as a whole.
    [[noreturn]] void refuseFile(const std::string& cause) const;
    /// The same of a file that ends too early; tools are told where its end is.
    [[noreturn]] void refuseEnd(const std::string& cause) const;

    /// What follows the current line, for readers that go on by characters.
    [[nodiscard]] std::string_view rest() const { return text().substr(next_); }
    /// The current line as a place of the input.
    [[nodiscard]] Place place() const { return {fileName_, lineNumber(line_.data())}; }
    /// The number of the line that holds this place of the file.
    [[nodiscard]] std::int64_t lineNumber(const char* place) const;
    [[nodiscard]] const std::string& fileName() const { return fileName_; }

private:
    void readRawLine();
    [[nodiscard]] bool isDataLine() const;
    void checkId(std::string_view id) const;
    [[nodiscard]] std::string lineWithEnd() const;
    [[nodiscard]] std::string_view text() const { return contents_.text(); }

    Inputs& inputs_;
    std::string fileName_;
    FileContents contents_;
    std::size_t next_ = 0;  // where the line after the current one starts
    std::string_view line_;
    bool lineFeed_ = false;
    bool part_ = false;
    bool cut_ = false;
    bool readAny_ = false;
};

}  // namespace mqf2vxb
