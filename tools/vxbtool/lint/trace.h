#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "files/input_observer.h"

namespace vxbtool::lint {

/// A data line as a reader took it.
struct TracedLine {
    std::size_t offset;  ///< in the file's text
    std::string_view text;
    bool scanned = false;        ///< it was scanned by a form; what follows holds then
    bool complete = false;       ///< all values of the form are there
    std::string_view rest = {};  ///< what the scan left
};

/// A token as a reader took it.
struct TracedToken {
    std::size_t offset;  ///< in the file's text
    mqf2vxb::TokenKind kind;
    std::string text;     ///< a range's end as the number that it counts as
    bool number = false;  ///< it was taken as a number, or a range of two
    std::int32_t value = 0;
    std::int32_t last = 0;  ///< end of a range
    std::string rest;       ///< what follows the digits
};

/// What the readers took from one text file.
struct TracedFile {
    std::string name;
    std::string text;
    std::vector<TracedLine> lines;  ///< the ID line is the first; views into `text`
    std::vector<TracedToken> tokens;
    std::optional<std::size_t> unread;  ///< where the tokens that a reader took end
    bool whole = false;                 ///< the reader took all that it wanted
};

/// Keeps what the readers of one conversion take from its text files, in the order of reading. A file
/// that several slots of a part name is kept once.
class Trace final : public mqf2vxb::InputObserver {
public:
    void opened(const std::string& name, std::string_view contents) override;
    void line(std::string_view line) override;
    void scanned(bool complete, std::string_view rest) override;
    void token(mqf2vxb::TokenKind kind, const char* start, std::string_view text) override;
    void number(std::int32_t value, std::string_view rest) override;
    void unread(const char* rest) override;

    /// A part of the model is read: its readers took all that they wanted of their files, of the last
    /// one only when they did not fail.
    void endPart(bool failed);

    [[nodiscard]] const std::deque<TracedFile>& files() const { return files_; }
    /// The files again, one as often as it was read.
    [[nodiscard]] const std::vector<const TracedFile*>& readings() const { return readings_; }
    /// Whether a file was opened, a text file or not.
    [[nodiscard]] bool wasOpened(const std::string& name) const { return opened_.contains(name); }

private:
    void begin();
    [[nodiscard]] std::size_t offsetOf(const char* place) const {
        return static_cast<std::size_t>(place - contents_.data());
    }

    std::deque<TracedFile> files_;  // their lines view into their texts: no entry moves
    std::vector<const TracedFile*> readings_;
    std::map<std::string, std::size_t> latest_;  // by their names, the files read last
    std::set<std::string> opened_;
    std::string name_;  // of the file opened last, a text file or not
    std::string_view contents_;
    bool begun_ = false;        // the file opened last has an entry in readings_
    bool repeated_ = false;     // and is kept already
    std::size_t finished_ = 0;  // files of the parts that have ended
};

}  // namespace vxbtool::lint
