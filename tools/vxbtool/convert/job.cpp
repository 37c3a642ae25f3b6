#include "vxbtool/convert/job.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/inputs.h"
#include "run/convert.h"
#include "vxbtool/convert/depfile.h"
#include "vxbtool/lint/lint.h"
#include "vxbtool/lint/watched_model.h"
#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/staged_outputs.h"
#include "writers/model_writer.h"

namespace vxbtool {
namespace {

/// An output that is a hard link to an input is no danger: it is replaced, not written into.
void checkNoInputIsOutput(const ModelFiles& files, const ConvertRun& run) {
    for (const std::string& input : files.opened()) {
        if (run.outputs.contains(mqf2vxb::finalTarget(input))) {
            mqf2vxb::notCorrectData({input}, "this input is also an output");
        }
    }
}

void writeDepfile(const ConvertJob& job, const ModelFiles& inputs, StagedOutputs& outputs) {
    const std::string text = depfileText(job.options.outputName, inputs.opened());
    const std::unique_ptr<mqf2vxb::OutputFile> file = outputs.create(job.depfile);
    if (!file) {
        mqf2vxb::cannotOpen(job.depfile, mqf2vxb::Access::write, errno);
    }
    if (!file->write(text) || !file->close()) {
        mqf2vxb::cannotWrite(job.depfile);
    }
}

void writeOutputs(const mqf2vxb::Model& model, const ConvertJob& job, const ConvertRun& run,
                  ModelFiles& files, StagedOutputs& outputs) {
    checkNoInputIsOutput(files, run);
    mqf2vxb::writeModel(model, job.options, files, outputs);
    if (!job.depfile.empty()) {
        writeDepfile(job, files, outputs);
    }
    outputs.commit();
}

/// Tells what lint found, also of a model that fails while it is made.
void makeLinted(lint::WatchedModel& watched, const ConvertJob& job, const ConvertRun& run,
                ModelFiles& files, ConvertOutcome& outcome) {
    const auto tell = [&] {
        const FileReport report = lintReport(job.model, watched.findings(), files, {});
        outcome.messages = humanReport({&report, 1}, run.sourceLines);
    };
    try {
        watched.make(job.model, job.options, files);
    } catch (const mqf2vxb::Report&) {
        tell();
        throw;
    }
    tell();
}

/// Lint looks on when there is a watched model.
void convertStaged(const ConvertJob& job, const ConvertRun& run, lint::WatchedModel* watched,
                   ModelFiles& files, StagedOutputs& outputs, ConvertOutcome& outcome) {
    if (watched != nullptr) {
        makeLinted(*watched, job, run, files, outcome);
        writeOutputs(watched->model(), job, run, files, outputs);
    } else {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(job.model, inputs, model);
        mqf2vxb::organiseModel(job.options, model);
        writeOutputs(model, job, run, files, outputs);
    }
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
            // It is the same as the one that is to be explained.
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

/// The cause with its place, as editors and build systems look for it, and the converter's report.
std::string reportText(const mqf2vxb::Report& report, const ConvertJob& job, const ConvertRun& run,
                       const lint::WatchedModel* watched, ModelFiles& files) {
    const FileReport found =
        lintReport(job.model, findingsOf(report, job, watched, files), files, {});
    const std::size_t errors = found.count(mqf2vxb::Severity::error);
    std::string text = plainLines(causeOf(report, job, found, files), run.sourceLines);
    if (errors > 1) {
        text += fmt::format("{}: {} more, which \"vxbtool lint\" shows\n", job.model,
                            counted(errors - 1, "error"));
    }
    return text + withoutAddresses(report.text());
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
    try {
        mqf2vxb::withMemory([&] {
            convertStaged(job, run, watched ? &*watched : nullptr, files, outputs, outcome);
        });
        outcome.converted = true;
    } catch (const mqf2vxb::Report& report) {
        outcome.messages +=
            printableLines(reportText(report, job, run, watched ? &*watched : nullptr, files));
    } catch (const std::exception& error) {
        outcome.messages += printableLines(fmt::format("{}: {}\n", job.model, error.what()));
    }
    return outcome;
}

}  // namespace vxbtool
