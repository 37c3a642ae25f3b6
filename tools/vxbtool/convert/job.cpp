#include "vxbtool/convert/job.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <system_error>
#include <vector>

#include <sys/stat.h>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/disk_files.h"
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
        if (run.outputs.contains(placeOf(input))) {
            mqf2vxb::notCorrectData({input}, "this input is also an output");
        }
    }
}

void writeDepfile(const ConvertJob& job, const ModelFiles& inputs, StagedOutputs& outputs) {
    const std::string text = depfileText(job.options.outputName, inputs.opened());
    const std::unique_ptr<mqf2vxb::OutputFile> file = outputs.create(job.depfile);
    if (!file) {
        mqf2vxb::cannotOpen(job.depfile);
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

void convertStaged(const ConvertJob& job, const ConvertRun& run, ModelFiles& files,
                   StagedOutputs& outputs, ConvertOutcome& outcome) {
    if (job.lint) {
        lint::WatchedModel watched;
        makeLinted(watched, job, run, files, outcome);
        writeOutputs(watched.model(), job, run, files, outputs);
    } else {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(job.model, inputs, model);
        mqf2vxb::organiseModel(job.options, model);
        writeOutputs(model, job, run, files, outputs);
    }
}

/// Names the option that leads to a component which is not where it was looked for.
std::string baseHint(const std::string& component, const ConvertJob& job, const ModelFiles& files) {
    const std::filesystem::path folder = std::filesystem::path(job.model).parent_path();
    const std::vector<std::string>& opened = files.opened();
    std::error_code error;
    if (!job.base.empty() || folder.empty() || component == job.model ||
        std::find(opened.begin(), opened.end(), component) != opened.end() ||
        !std::filesystem::exists(folder / component, error)) {
        return {};
    }
    return fmt::format("({} exists: try --base {})\n", (folder / component).string(),
                       folder.string());
}

/// The cause with its place, as editors and build systems look for it, and the converter's report.
std::string reportText(const mqf2vxb::Report& report, const ConvertJob& job,
                       const ModelFiles& files) {
    const mqf2vxb::Place& place = report.place();
    std::string where = place.file.empty() ? job.model : files.pathOf(place.file);
    if (place.line > 0) {
        where += fmt::format(":{}", place.line);
    }
    return fmt::format("{}: {}\n{}{}", where, report.cause(), report.text(),
                       baseHint(place.file, job, files));
}

}  // namespace

FilePlace placeOf(const std::string& name) {
    const std::filesystem::path target = mqf2vxb::finalTarget(name);
    struct stat folder {};
    if (::stat(target.parent_path().c_str(), &folder) != 0) {
        return {0, 0, target};
    }
    return {folder.st_dev, folder.st_ino, target.filename()};
}

ConvertOutcome convertModel(const ConvertJob& job, ConvertRun& run) {
    ModelFiles files(job.base);
    StagedOutputs outputs(run.temporaryFiles);
    ConvertOutcome outcome;
    try {
        mqf2vxb::withMemory([&] { convertStaged(job, run, files, outputs, outcome); });
        outcome.converted = true;
    } catch (const mqf2vxb::Report& report) {
        outcome.messages += printableLines(reportText(report, job, files));
    } catch (const std::exception& error) {
        outcome.messages += printableLines(fmt::format("{}: {}\n", job.model, error.what()));
    }
    return outcome;
}

}  // namespace vxbtool
