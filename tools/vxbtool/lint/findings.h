#pragma once

#include <cstddef>
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

/// Where the word at position `number` of a line stands; a line with fewer gives its end.
SourcePlace wordPlace(const TracedFile& file, const TracedLine& line, std::size_t number);

/// Gathers what lint finds in one model.
class Findings {
public:
    /// Adds a finding. The values are fmt::arg()s for the names in the kind's text.
    template <class... Values>
    void add(const FindingKind& kind, SourcePlace place, const Values&... values) {
        found_.push_back({&kind, place, fmt::format(fmt::runtime(kind.text), values...)});
    }

    /// Everything found, in the order of the files and of their contents.
    [[nodiscard]] std::vector<ReportedFinding> inOrder(const Trace& trace) &&;

private:
    struct Found {
        const FindingKind* kind;
        SourcePlace place;
        std::string text;
    };
    std::vector<Found> found_;
};

}  // namespace vxbtool::lint
