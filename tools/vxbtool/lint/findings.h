#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/core.h>

#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/trace.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool::lint {

/// A place in one of the files that were read.
struct SourcePlace {
    const TracedFile* file;
    std::size_t offset;
};

/// A line as reports show it: without a carriage return at its end.
std::string_view shownLine(std::string_view line);

/// A line of a file, counted from 1, as reports show it; empty for 0.
std::string sourceLine(const TracedFile& file, std::int64_t number);

/// Fills in where a finding stands.
void placeFinding(const SourcePlace& place, ReportedFinding& finding);

/// Where the word at position `number` of a line stands; a line with fewer gives its end.
SourcePlace wordPlace(const TracedFile& file, const TracedLine& line, std::size_t number);

/// Gathers what lint finds in one model. Of each kind in each file only the first are kept and the
/// others counted, since a few characters can name millions of records.
class Findings {
public:
    static constexpr std::size_t keptPerKind = 1000;

    /// Adds a finding. The values are fmt::arg()s for the names in the kind's text.
    template <class... Values>
    void add(const FindingKind& kind, SourcePlace place, const Values&... values) {
        if (counts_[{place.file, &kind}]++ < keptPerKind) {
            found_.push_back({&kind, place, fmt::format(fmt::runtime(kind.text), values...)});
        }
    }

    /// What was kept, in the order of the files and of their contents. The last one of a kind in a
    /// file stands for those that were only counted.
    [[nodiscard]] std::vector<ReportedFinding> inOrder(const Trace& trace) &&;

private:
    struct Found {
        const FindingKind* kind;
        SourcePlace place;
        std::string text;
    };
    using KindInFile = std::pair<const TracedFile*, const FindingKind*>;

    std::vector<Found> found_;
    std::map<KindInFile, std::size_t> counts_;  // kept or not
};

}  // namespace vxbtool::lint
