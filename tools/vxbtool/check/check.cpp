#include "vxbtool/check/check.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "vxb/findings.h"
#include "vxb/word_meaning.h"
#include "vxbtool/shared/vxb_input.h"

namespace vxbtool {
namespace {

using mqf2vxb::Finding;
using mqf2vxb::FindingKind;
using mqf2vxb::VxbFile;

constexpr const char* checkExamples = R"(Examples:
  vxbtool check car.vxb                   silence: the file is sound
  vxbtool check --werror out/*.vxb        fail on warnings too
  vxbtool check -W VXB042 car.vxb         leave one kind of finding out
  vxbtool check --json car.vxb | jq .passed)";

struct CheckArguments {
    std::vector<std::string> files;
    ReportOptions report;
};

ReportedFinding reported(const Finding& finding, const std::string& file) {
    ReportedFinding result;
    result.code = finding.kind->code;
    result.severity = finding.kind->severity;
    result.text = finding.text();
    result.file = file;
    return result;
}

std::vector<ReportedFinding> findingsOf(const VxbFile& file, const std::string& name) {
    std::vector<ReportedFinding> result;
    std::map<const FindingKind*, std::size_t> lastOf;
    for (const Finding& finding : file.findings.kept()) {
        ReportedFinding& added = result.emplace_back(reported(finding, name));
        added.offset = finding.offset;
        added.place = placeName(file, finding.offset);
        added.found = finding.found;
        added.expected = finding.expected;
        lastOf[finding.kind] = result.size() - 1;
    }
    // The last that was kept stands for those that were only counted.
    for (const auto& [kind, last] : lastOf) {
        const std::size_t number = file.findings.count(*kind);
        if (number > mqf2vxb::Findings::keptPerKind) {
            result[last].occurrences += number - mqf2vxb::Findings::keptPerKind;
        }
    }
    return result;
}

ExitStatus runCheck(const CheckArguments& arguments) {
    std::vector<FileReport> reports;
    for (const std::string& file : arguments.files) {
        reports.push_back(checkFile(file, arguments.report));
    }
    return printReport("check", reports, arguments.report);
}

}  // namespace

FileReport reportOn(const VxbFile& file, const std::string& name, const ReportOptions& options) {
    FileReport report{name, findingsOf(file, name)};
    selectFindings(report.findings, options);
    return report;
}

FileReport checkFile(const std::string& name, const ReportOptions& options) {
    FileReport report{name, {}};
    try {
        return reportOn(readVxbFile(name), name, options);
    } catch (const UnreadableFile& error) {
        report.findings = {reported({&mqf2vxb::finding::unreadable, 0, 0, {}, error.what()}, name)};
    }
    selectFindings(report.findings, options);
    return report;
}

void addCheck(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("check", "Tell whether VXB files are sound");
    const auto arguments = std::make_shared<CheckArguments>();
    command->add_option("FILE", arguments->files, "VXB files to look at")
        ->type_name("")
        ->required();
    addReportOptions(*command, arguments->report, mqf2vxb::findingKinds);
    command->footer(checkExamples);
    command->callback([arguments, &session] { session.status = runCheck(*arguments); });
}

}  // namespace vxbtool
