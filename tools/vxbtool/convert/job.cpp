#include "vxbtool/convert/job.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <vector>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/inputs.h"
#include "run/convert.h"
#include "vxbtool/convert/depfile.h"
#include "vxbtool/convert/files.h"
#include "vxbtool/lint/lint.h"
#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/model_files.h"
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
        mqf2vxb::cannotOpen(job.depfile);
    }
    if (!file->write(text) || !file->close()) {
        mqf2vxb::cannotWrite(job.depfile);
    }
}

void convertStaged(const ConvertJob& job, const ConvertRun& run, ModelFiles& files,
                   StagedOutputs& outputs) {
    mqf2vxb::withMemory([&] {
        mqf2vxb::Inputs inputs(files);
        mqf2vxb::Model model;
        mqf2vxb::readModel(job.model, inputs, model);
        mqf2vxb::organiseModel(job.options, model);
        checkNoInputIsOutput(files, run);
        mqf2vxb::writeModel(model, job.options, files, outputs);
        if (!job.depfile.empty()) {
            writeDepfile(job, files, outputs);
        }
        outputs.commit();
    });
}

/// What lint has to say beside what the conversion reports.
std::string lintText(const ConvertJob& job, const ConvertRun& run) {
    FileReport report = lintFile(job.model, job.options.scale, job.base, {});
    std::erase_if(report.findings, [](const ReportedFinding& finding) {
        return finding.severity == mqf2vxb::Severity::error;
    });
    return humanReport({&report, 1}, run.sourceLines);
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

ConvertOutcome convertModel(const ConvertJob& job, ConvertRun& run) {
    ModelFiles files(job.base);
    StagedOutputs outputs(run.temporaryFiles);
    ConvertOutcome outcome;
    try {
        if (job.lint) {
            outcome.messages = lintText(job, run);
        }
        convertStaged(job, run, files, outputs);
        outcome.converted = true;
    } catch (const mqf2vxb::Report& report) {
        outcome.messages += reportText(report, job, files);
    } catch (const std::exception& error) {
        outcome.messages += fmt::format("{}: {}\n", job.model, error.what());
    }
    return outcome;
}

}  // namespace vxbtool
