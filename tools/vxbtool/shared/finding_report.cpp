#include "vxbtool/shared/finding_report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/core.h>
#include <fmt/ranges.h>

#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/json_output.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

using mqf2vxb::Severity;

/// How many other places of a folded finding are shown.
constexpr std::size_t shownOthers = 5;

// Escape sequences of terminals.
constexpr std::string_view placeColour = "\x1b[1m";
constexpr std::string_view errorColour = "\x1b[1;31m";
constexpr std::string_view warningColour = "\x1b[1;35m";
constexpr std::string_view caretColour = "\x1b[1;32m";

std::string coloured(std::string_view text, std::string_view colour, const TextStyle& style) {
    return style.colour ? fmt::format("{}{}\x1b[m", colour, text) : std::string(text);
}

std::string_view nameOf(Severity severity) {
    return severity == Severity::error ? "error" : "warning";
}

std::string placeOf(const ReportedFinding& finding) {
    std::string place = finding.file;
    if (finding.offset) {
        return fmt::format("{}: word {} ({})", finding.file, *finding.offset, finding.place);
    }
    for (const std::int64_t number : {finding.line, finding.column}) {
        if (number > 0) {
            place += fmt::format(":{}", number);
        }
    }
    return place;
}

/// The word offset or line alone.
std::int64_t shortPlace(const ReportedFinding& finding) {
    return finding.offset ? *finding.offset : finding.line;
}

/// " (7 more, lines 3, 4, 5, 6, 7, ...)" behind a finding that stands for others too.
std::string othersOf(const ReportedFinding& finding) {
    if (finding.occurrences == 1) {
        return {};
    }
    if (finding.others.empty()) {
        return fmt::format(" ({} more)", finding.occurrences - 1);
    }
    const bool cut = finding.others.size() > shownOthers;
    const std::span shown(finding.others.data(), cut ? shownOthers : finding.others.size());
    return fmt::format(" ({} more, {}{} {}{})", finding.occurrences - 1,
                       finding.offset ? "word" : "line", shown.size() == 1 ? "" : "s",
                       fmt::join(shown, ", "), cut ? ", ..." : "");
}

/// The line and, when it is known, a caret below the finding's column. Tabs are kept, so that both
/// lines have them; of a character of several bytes only the first takes a place.
std::string sourceOf(const ReportedFinding& finding, const TextStyle& style) {
    const std::string source = printable(finding.source);
    if (finding.column == 0) {
        return "  " + source + "\n";
    }
    std::string caret;
    const auto column = static_cast<std::size_t>(finding.column);
    for (const char c : printable(std::string_view(finding.source).substr(0, column - 1))) {
        constexpr unsigned continuationMask = 0xC0;
        constexpr unsigned continuation = 0x80;
        if (c == '\t') {
            caret += c;
        } else if ((static_cast<unsigned char>(c) & continuationMask) != continuation) {
            caret += ' ';
        }
    }
    return "  " + source + "\n  " + caret + coloured("^", caretColour, style) + "\n";
}

std::size_t countAll(std::span<const FileReport> files, Severity severity) {
    std::size_t number = 0;
    for (const FileReport& file : files) {
        number += file.count(severity);
    }
    return number;
}

bool passes(std::span<const FileReport> files, bool werror) {
    return countAll(files, Severity::error) == 0 &&
           (!werror || countAll(files, Severity::warning) == 0);
}

Json jsonOf(const ReportedFinding& finding) {
    Json json{{"code", finding.code},
              {"severity", nameOf(finding.severity)},
              {"text", finding.text},
              {"file", finding.file}};
    if (finding.offset) {
        json["offset"] = *finding.offset;
        json["place"] = finding.place;
    }
    if (finding.found) {
        json["found"] = *finding.found;
    }
    if (finding.expected) {
        json["expected"] = *finding.expected;
    }
    if (finding.line > 0) {
        json["line"] = finding.line;
    }
    if (finding.column > 0) {
        json["column"] = finding.column;
    }
    json["occurrences"] = finding.occurrences;
    return json;
}

}  // namespace

std::size_t FileReport::count(Severity severity) const {
    std::size_t number = 0;
    for (const ReportedFinding& finding : findings) {
        number += finding.severity == severity ? finding.occurrences : 0;
    }
    return number;
}

void addReportOptions(CLI::App& command, ReportOptions& options,
                      std::span<const mqf2vxb::FindingKind> kinds) {
    command.add_flag("--json", options.json, "Report as JSON");
    command.add_flag("--werror", options.werror, "Warnings fail too");
    command.add_flag("--all", options.all, "Report equal findings one by one");
    addColourOption(command, options.colour);
    std::vector<std::string> codes;
    for (const mqf2vxb::FindingKind& kind : kinds) {
        if (kind.severity != Severity::error) {
            codes.emplace_back(kind.code);
        }
    }
    const auto checkCode = [kinds](const std::string& code) {
        const auto known = std::ranges::find(kinds, code, &mqf2vxb::FindingKind::code);
        if (known == kinds.end()) {
            return fmt::format("{} is none of the codes {} to {}", code, kinds.front().code,
                               kinds.back().code);
        }
        return known->severity == Severity::error
                   ? fmt::format("{} is an error, which is always reported", code)
                   : "";
    };
    command.add_option("-W", options.off, "Do not report warnings of this code; may be repeated")
        ->option_text("CODE")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all()
        ->check(CLI::Validator(checkCode, fmt::format("{{{}}}", fmt::join(codes, ","))));
}

void selectFindings(std::vector<ReportedFinding>& findings, const ReportOptions& options) {
    std::vector<ReportedFinding> kept;
    std::map<std::array<std::string, 3>, std::size_t> firstOf;
    for (ReportedFinding& finding : findings) {
        if (std::find(options.off.begin(), options.off.end(), finding.code) != options.off.end()) {
            continue;
        }
        const auto [place, isNew] =
            firstOf.try_emplace({finding.file, finding.code, finding.missing}, kept.size());
        if (isNew || options.all) {
            kept.push_back(std::move(finding));
            continue;
        }
        ReportedFinding& first = kept[place->second];
        first.occurrences += finding.occurrences;
        const std::int64_t at = shortPlace(finding);
        if (first.others.size() <= shownOthers &&
            (first.others.empty() || at != first.others.back())) {
            first.others.push_back(at);
        }
    }
    findings = std::move(kept);
}

std::string plainLines(const ReportedFinding& finding, const TextStyle& style) {
    const std::string line = finding.line > 0 ? fmt::format(":{}", finding.line) : "";
    std::string text =
        fmt::format("{}: {}\n", coloured(printable(finding.file + line), placeColour, style),
                    printable(finding.text));
    if (style.sourceLines && finding.line > 0) {
        text += sourceOf(finding, style);
    }
    return text;
}

std::string humanReport(std::span<const FileReport> files, const TextStyle& style) {
    std::string report;
    for (const FileReport& file : files) {
        for (const ReportedFinding& finding : file.findings) {
            const bool error = finding.severity == Severity::error;
            report += fmt::format(
                "{}: {}: {}\n", coloured(printable(placeOf(finding)), placeColour, style),
                coloured(nameOf(finding.severity), error ? errorColour : warningColour, style),
                printable(fmt::format("{} [{}]{}", finding.text, finding.code, othersOf(finding))));
            if (style.sourceLines && finding.line > 0) {
                report += sourceOf(finding, style);
            }
        }
    }
    if (!report.empty()) {
        report += counted(countAll(files, Severity::error), "error") + ", " +
                  counted(countAll(files, Severity::warning), "warning") + "\n";
    }
    return report;
}

std::string jsonReport(std::string_view command, std::span<const FileReport> files, bool werror) {
    constexpr int version = 1;
    constexpr int indent = 2;
    Json report{{"format", "vxbtool-findings"},
                {"version", version},
                {"command", command},
                {"passed", passes(files, werror)},
                {"files", Json::array()}};
    for (const FileReport& file : files) {
        Json json{{"file", file.name},
                  {"errors", file.count(Severity::error)},
                  {"warnings", file.count(Severity::warning)},
                  {"findings", Json::array()}};
        for (const ReportedFinding& finding : file.findings) {
            json["findings"].push_back(jsonOf(finding));
        }
        report["files"].push_back(std::move(json));
    }
    return report.dump(indent, ' ', true, Json::error_handler_t::replace) + "\n";
}

ExitStatus printReport(std::string_view command, std::span<const FileReport> files,
                       const ReportOptions& options) {
    printText(options.json ? jsonReport(command, files, options.werror)
                           : humanReport(files, styleFor(STDOUT_FILENO, options.colour)));
    return passes(files, options.werror) ? ExitStatus::good : ExitStatus::badInput;
}

}  // namespace vxbtool
