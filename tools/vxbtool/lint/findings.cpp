#include "vxbtool/lint/findings.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "text/scan.h"

namespace vxbtool::lint {
namespace {

/// Counts lines from the front to the back of one file.
class LineCounter {
public:
    explicit LineCounter(std::string_view text) : text_(text), end_(text.find('\n')) {}

    /// Fills in where `offset`, which is not before the latest one, stands.
    void place(std::size_t offset, ReportedFinding& finding) {
        while (end_ < offset) {
            start_ = end_ + 1;
            end_ = text_.find('\n', start_);
            ++line_;
        }
        finding.line = line_;
        finding.column = static_cast<std::int64_t>(offset - start_) + 1;
        constexpr std::size_t longest = 255;  // what a reader takes as one line
        const std::string_view source = text_.substr(start_, std::min(end_ - start_, longest));
        if (offset - start_ <= source.size()) {
            finding.source = shownLine(source);
        }
    }

private:
    std::string_view text_;
    std::size_t start_ = 0;  // of the current line
    std::size_t end_;
    std::int64_t line_ = 1;
};

}  // namespace

std::string_view shownLine(std::string_view line) {
    return line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0));
}

std::string sourceLine(const TracedFile& file, std::int64_t number) {
    std::string_view rest = file.text;
    for (std::int64_t line = 1; line < number; ++line) {
        rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
    }
    return number == 0 ? "" : std::string(shownLine(rest.substr(0, rest.find('\n'))));
}

void placeFinding(const SourcePlace& place, ReportedFinding& finding) {
    finding.file = place.file->name;
    LineCounter(place.file->text).place(place.offset, finding);
}

SourcePlace wordPlace(const TracedFile& file, const TracedLine& line, std::size_t number) {
    std::string_view rest = line.text;
    for (std::size_t i = 0; i < number; ++i) {
        mqf2vxb::scanWord(rest);
    }
    mqf2vxb::skipSpace(rest);
    return {&file, line.offset + line.text.size() - rest.size()};
}

std::vector<ReportedFinding> Findings::inOrder(const Trace& trace) && {
    std::map<const TracedFile*, std::size_t> position;
    std::vector<LineCounter> counters;
    for (const TracedFile& file : trace.files()) {
        position.emplace(&file, position.size());
        counters.emplace_back(file.text);
    }
    const auto key = [&](const Found& found) {
        return std::tuple(position.at(found.place.file), found.place.offset, found.kind->code);
    };
    std::stable_sort(found_.begin(), found_.end(),
                     [&](const Found& a, const Found& b) { return key(a) < key(b); });

    std::vector<ReportedFinding> result;
    result.reserve(found_.size());
    std::map<KindInFile, std::size_t> lastOf;
    for (Found& found : found_) {
        lastOf[{found.place.file, found.kind}] = result.size();
        ReportedFinding finding;
        finding.code = found.kind->code;
        finding.severity = found.kind->severity;
        finding.text = std::move(found.text);
        finding.file = found.place.file->name;
        counters[position.at(found.place.file)].place(found.place.offset, finding);
        result.push_back(std::move(finding));
    }
    for (const auto& [kind, last] : lastOf) {
        result[last].occurrences += counts_[kind] - std::min(counts_[kind], keptPerKind);
    }
    return result;
}

}  // namespace vxbtool::lint
