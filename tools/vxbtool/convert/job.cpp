#include "vxbtool/convert/job.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/disk_files.h"
#include "files/inputs.h"
#include "run/convert.h"
#include "vxbtool/convert/depfile.h"
#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/lint.h"
#include "vxbtool/lint/watched_model.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/staged_outputs.h"
#include "writers/model_writer.h"

namespace vxbtool {
namespace {

void checkNoInputIsOutput(const ModelFiles& files, const ConvertRun& run) {
    for (const std::string& input : files.opened()) {
        if (run.outputs.contains(placeOf(input))) {
            mqf2vxb::notCorrectData({input}, "this input is also an output");
        }
    }
}

void writeOutputs(const mqf2vxb::Model& model, const ConvertJob& job, const ConvertRun& run,
                  ModelFiles& files, StagedOutputs& outputs) {
    checkNoInputIsOutput(files, run);
    mqf2vxb::writeModel(model, job.options, files, outputs);
    if (!job.depfile.empty()) {
        outputs.write(job.depfile, depfileText(job.options.outputName, files.opened()));
    }
    outputs.commit();
}

/// Makes the model while lint looks on, and tells what that found; false when it found enough to
/// leave the model at that.
bool makeLinted(lint::WatchedModel& watched, const ConvertJob& job, const ConvertRun& run,
                ModelFiles& files, ConvertOutcome& outcome) {
    const auto tell = [&] {
        outcome.report = lintReport(job.model, watched.findings(), files, run.report);
        outcome.messages = humanReport({&outcome.report, 1}, run.style);
    };
    try {
        watched.make(job.model, job.options, files);
    } catch (const mqf2vxb::Report&) {
        tell();
        throw;
    }
    tell();
    return !run.report.werror || outcome.report.findings.empty();
}

/// Lint looks on when there is a watched model. True when the model was converted.
bool convertStaged(const ConvertJob& job, const ConvertRun& run, lint::WatchedModel* watched,
                   ModelFiles& files, StagedOutputs& outputs, ConvertOutcome& outcome) {
    if (watched != nullptr) {
        if (!makeLinted(*watched, job, run, files, outcome)) {
            return false;
        }
        writeOutputs(watched->model(), job, run, files, outputs);
    } else {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(job.model, inputs, model);
        mqf2vxb::organiseModel(job.options, model);
        writeOutputs(model, job, run, files, outputs);
    }
    return true;
}

/// What lint says of the failure. Lint has to read the model again when it did not look on.
std::vector<ReportedFinding> findingsOf(const mqf2vxb::Report& report, const ConvertJob& job,
                                        const lint::WatchedModel* watched, ModelFiles& files) {
    if (watched != nullptr) {
        return watched->findings(report);
    }
    lint::WatchedModel again;
    std::error_code error;
    const std::vector<std::string>& opened = files.opened();
    const bool canBeRead = std::all_of(opened.begin(), opened.end(), [&](const std::string& name) {
        return std::filesystem::is_regular_file(name, error);
    });
    if (canBeRead) {
        ModelFiles sameFiles(job.base);
        try {
            again.make(job.model, job.options, sameFiles);
        } catch (const mqf2vxb::Report&) {
            // Reading again fails with the report that is to be explained.
        }
    }
    return again.findings(report);
}

/// The converter's report without addresses in memory, which differ from run to run.
std::string withoutAddresses(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::string_view line =
            text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
        const bool isAddress = line.find("ddress") < line.find(':');
        result += isAddress ? "" : line;
        text.remove_prefix(line.size());
    }
    while (result.ends_with('\n')) {
        result.pop_back();
    }
    return result + "\n";
}

/// The error that the report tells of: the one at its place, or else the first. A fault of the model's
/// own file comes before all others, which may follow from it.
const ReportedFinding& causeOf(const mqf2vxb::Report& report, const ConvertJob& job,
                               const FileReport& found, const ModelFiles& files) {
    const mqf2vxb::Place& place = report.place();
    const ReportedFinding* first = nullptr;
    for (const ReportedFinding& finding : found.findings) {
        if (finding.severity != mqf2vxb::Severity::error) {
            continue;
        }
        first = first == nullptr ? &finding : first;
        if (first->file == job.model || (place.line > 0 && place.line == finding.line &&
                                         files.pathOf(place.file) == finding.file)) {
            return first->file == job.model ? *first : finding;
        }
    }
    return *first;
}

/// Tells of a failure: the cause with its place, as editors and build systems look for it, and the
/// converter's report.
void tellFailure(const mqf2vxb::Report& report, const ConvertJob& job, const ConvertRun& run,
                 const lint::WatchedModel* watched, ModelFiles& files, ConvertOutcome& outcome) {
    FileReport found =
        lintReport(job.model, findingsOf(report, job, watched, files), files, run.report);
    const std::size_t errors = found.count(mqf2vxb::Severity::error);
    outcome.messages += plainLines(causeOf(report, job, found, files), run.style);
    if (errors > 1) {
        outcome.messages += fmt::format("{}: {} more, which \"vxbtool lint\" shows\n",
                                        printable(job.model), counted(errors - 1, "error"));
    }
    outcome.messages += printableLines(withoutAddresses(report.text()));
    if (watched == nullptr) {
        std::erase_if(found.findings, [](const ReportedFinding& finding) {
            return finding.severity != mqf2vxb::Severity::error;
        });
    }
    outcome.report = std::move(found);
}

/// Tells of a failure of which nothing more is known than these words.
void tellFailure(std::string_view cause, const ConvertJob& job, ConvertOutcome& outcome) {
    ReportedFinding finding;
    finding.code = lint::kind::cannotConvert.code;
    finding.severity = mqf2vxb::Severity::error;
    finding.text = cause;
    finding.file = job.model;
    outcome.messages += plainLines(finding, {});
    outcome.report.findings.push_back(std::move(finding));
}

}  // namespace

ConvertOutcome convertModel(const ConvertJob& job, ConvertRun& run) {
    ModelFiles files(job.base);
    StagedOutputs outputs(run.temporaryFiles);
    ConvertOutcome outcome;
    std::optional<lint::WatchedModel> watched;
    if (job.lint) {
        watched.emplace();
    }
    const lint::WatchedModel* const lint = watched ? &*watched : nullptr;
    try {
        try {
            mqf2vxb::withMemory([&] {
                outcome.converted =
                    convertStaged(job, run, watched ? &*watched : nullptr, files, outputs, outcome);
            });
        } catch (const mqf2vxb::Report& report) {
            tellFailure(report, job, run, lint, files, outcome);
        }
    } catch (const std::exception& error) {
        tellFailure(error.what(), job, outcome);
    }
    outcome.report.name = job.model;
    if (run.report.json) {
        outcome.messages.clear();
    }
    return outcome;
}

}  // namespace vxbtool
