#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace mqf2vxb {

/// Where in the input a report points. A line or column of 0 is not known.
struct Place {
    std::string file;
    std::int64_t line = 0;
    std::int64_t column = 0;
};

/// What tools say of a failure in an author's terms. The report's text is the same without.
struct Explanation {
    std::string cause;
    Place place;
};

/// The one way a conversion fails: an exception that carries the whole report text, ready to be
/// printed. Made by the functions below and by nothing else.
class Report : public std::exception {
public:
    Report(std::string text, std::string cause, Place place = {});

    /// The report as a person sees it on standard output, every line ended.
    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    /// The cause alone, one line without its end, for tools that print "file:line: cause".
    [[nodiscard]] const std::string& cause() const noexcept { return cause_; }
    [[nodiscard]] const Place& place() const noexcept { return place_; }
    /// Tells tools more; what the explanation leaves out stays as it is, and so does the text.
    void explain(Explanation explanation);
    [[nodiscard]] const char* what() const noexcept override { return text_.c_str(); }

private:
    std::string text_;
    std::string cause_;
    Place place_;
};

/// How the report of missing memory names a table: by its name alone, or by the operation that
/// makes it and a short name.
struct TableLabel {
    std::string_view name;
    std::string_view operation = {};
};

/// Memory for `count` records of `recordSize` bytes could not be had; `grown` tells whether a
/// table that held records already was to be enlarged.
[[noreturn]] void tableAllocationFailed(const TableLabel& label, std::size_t recordSize,
                                        std::size_t count, bool grown);
/// Memory outside the tables could not be had.
[[noreturn]] void outOfMemory();

/// The table that the report of a missing record speaks of.
struct Area {
    const void* top;
    std::size_t recordSize;
    std::size_t count;
    std::string_view table;
};
[[noreturn]] void areaMissing(const Area& area, std::int64_t index);

/// What a file that cannot be opened was wanted for.
enum class Access : std::uint8_t { read, write };

/// An index of `file` that has to be below `count`: reports `message` when it is not.
void checkIndex(const std::string& file, std::int64_t index, std::int64_t count,
                std::string_view message);

[[noreturn]] void typeMismatch(std::string_view location, std::uint32_t value,
                               Explanation explanation = {});
[[noreturn]] void nameMismatch(std::string_view location, std::string_view text,
                               Explanation explanation = {});
[[noreturn]] void notFormat(const std::string& file, std::string_view format);
[[noreturn]] void no24BitImage(const std::string& file);
[[noreturn]] void noGeoFile();
[[noreturn]] void unknownGeoFlag(std::int32_t polygon, std::int32_t kind);
[[noreturn]] void notSuitableTexture();

/// The causes name the system's reason, that of `error`; 0 is none.
[[noreturn]] void cannotOpen(const std::string& file, Access access, int error = 0);
[[noreturn]] void cannotWrite(const std::string& file, int error);
/// `line` is the ID line as it was read, with its line feed when it had one.
[[noreturn]] void wrongTag(const std::string& file, std::string_view line,
                           const std::string& cause);
[[noreturn]] void wrongDate(const std::string& file, std::string_view line,
                            const std::string& cause);

/// Input that cannot become a right output file. `cause` is short, in lower case, without a full
/// stop; a place without a line leaves the "Line" out of the report.
[[noreturn]] void notCorrectData(const Place& place, const std::string& cause,
                                 Explanation explanation = {});

/// A section is about to be written at another word offset than the layout gives it: a fault of
/// this program.
[[noreturn]] void layoutFault(std::string_view section, std::uint64_t expected,
                              std::uint64_t written);

/// printf formatting into a string, for reports and other rarely made texts.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);

}  // namespace mqf2vxb
