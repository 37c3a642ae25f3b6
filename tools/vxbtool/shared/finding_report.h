#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vxb/findings.h"
#include "vxbtool/shared/colour.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

/// A finding of "check" or "lint" as the reports show it.
struct ReportedFinding {
    std::string code;
    mqf2vxb::Severity severity = mqf2vxb::Severity::warning;
    std::string text;  ///< one line without its end
    std::string file;
    // Where in a text file, counted from 1; 0 is not known.
    std::int64_t line = 0;
    std::int64_t column = 0;
    std::optional<std::uint32_t> offset = {};  ///< where in a VXB file, in words
    std::string place = {};                    ///< what stands there, for instance "coordinate 3"
    /// The value to blame and the right one, as far as the kind of finding has them.
    std::optional<std::uint32_t> found = {}, expected = {};
    std::size_t occurrences = 1;            ///< findings that this one stands for, itself counted
    std::vector<std::int64_t> others = {};  ///< lines or word offsets of the first of the others
    std::string source = {};                ///< the text of the line
    std::string missing = {};  ///< a file that could not be opened, as the model names it
};

/// What was found in one file of the command line and in the files that it names.
struct FileReport {
    std::string name;
    std::vector<ReportedFinding> findings;

    [[nodiscard]] std::size_t count(mqf2vxb::Severity severity) const;
};

/// The options that every command with findings has.
struct ReportOptions {
    bool json = false;
    bool werror = false;
    bool all = false;              ///< findings are not folded
    std::string colour = "auto";   ///< when reports for people have colours
    std::vector<std::string> off;  ///< codes of warnings that are not reported
};

/// Adds the options. "-W" takes the codes of these kinds, which are there as long as the program is.
void addReportOptions(CLI::App& command, ReportOptions& options,
                      std::span<const mqf2vxb::FindingKind> kinds);

/// Leaves out what `options` turns off and, unless they ask for all, folds equal findings into the
/// first of them. Findings are equal when they have one code and lie in one file.
void selectFindings(std::vector<ReportedFinding>& findings, const ReportOptions& options);

/// "file:line: text" of one finding, as compilers have it, and in a style with source lines that line
/// with a caret; every line ended. Control characters do not reach the terminal.
std::string plainLines(const ReportedFinding& finding, const TextStyle& style);

/// The report for people, every line ended. Empty when nothing was found.
std::string humanReport(std::span<const FileReport> files, const TextStyle& style);
/// The report for machines, as docs/json-schema.md describes it.
std::string jsonReport(std::string_view command, std::span<const FileReport> files, bool werror);

/// Prints the report that the options ask for on standard output; returns what the program ends
/// with.
ExitStatus printReport(std::string_view command, std::span<const FileReport> files,
                       const ReportOptions& options);

}  // namespace vxbtool
