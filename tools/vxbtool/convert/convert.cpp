#include "vxbtool/convert/convert.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "vxbtool/convert/console.h"
#include "vxbtool/convert/job.h"
#include "vxbtool/lint/catalogue.h"
#include "vxbtool/shared/scale_option.h"
#include "vxbtool/shared/signals.h"
#include "vxbtool/shared/standard_streams.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;

constexpr const char* convertExamples = R"(Examples:
  vxbtool convert car.mqf                      write car.vxb
  vxbtool convert --scale 0.5 -o small.vxb car.mqf
  vxbtool convert --out-dir out -j 4 *.mqf     write out/*.vxb, four at a time
  vxbtool convert --base art art/car.mqf       open the files that car.mqf names from art/
  vxbtool convert -o car.vxb --depfile car.d car.mqf
                                               list the inputs for Make or Ninja)";

struct ConvertArguments {
    std::vector<std::string> models;
    std::string output;
    std::string outputFolder;
    std::string scale = "1";
    bool noImages = false;
    std::string hex;
    std::string depfile;
    std::string base;
    bool lint = false;
    ReportOptions report;
    unsigned threads = std::max(1U, std::thread::hardware_concurrency());
};

std::string defaultOutput(const std::string& model, const std::string& folder) {
    const fs::path output = fs::path(model).replace_extension(".vxb");
    return folder.empty() ? output : fs::path(folder) / output.filename();
}

/// Adds an output to the run; one that another job or option has already is bad usage, but for the
/// device that keeps nothing.
void claimOutput(const std::string& name, ConvertRun& run) {
    if (!run.outputs.insert(placeOf(name)).second && name != "/dev/null") {
        throw CLI::ValidationError(name, "several outputs would be this file");
    }
}

std::vector<ConvertJob> makeJobs(const ConvertArguments& arguments, ConvertRun& run) {
    mqf2vxb::RunOptions options;
    options.scale = parseScale(arguments.scale);
    options.imageOutput = !arguments.noImages;
    options.hexOutput = !arguments.hex.empty();
    options.hexName = outputPath(arguments.hex);

    std::vector<ConvertJob> jobs;
    const bool lint = arguments.lint || arguments.report.werror || !arguments.report.off.empty();
    for (const std::string& model : arguments.models) {
        options.outputName = arguments.output.empty() ? defaultOutput(model, arguments.outputFolder)
                                                      : outputPath(arguments.output);
        if (model == "-" && arguments.output.empty()) {
            throw CLI::ValidationError("-o", "is needed for a model from standard input");
        }
        claimOutput(options.outputName, run);
        jobs.push_back(
            {inputPath(model), options, outputPath(arguments.depfile), arguments.base, lint});
    }
    for (const std::string& name : {options.hexName, outputPath(arguments.depfile)}) {
        if (!name.empty()) {
            claimOutput(name, run);
        }
    }
    if (arguments.report.json) {
        claimOutput(outputPath("-"), run);  // where the report goes
    }
    return jobs;
}

void checkOptionsForOneModel(const ConvertArguments& arguments) {
    const auto check = [&](const char* option, const std::string& value) {
        if (!value.empty() && arguments.models.size() > 1) {
            throw CLI::ValidationError(
                option, fmt::format("is for one model, not for {}", arguments.models.size()));
        }
    };
    check("-o", arguments.output);
    check("--hex", arguments.hex);
    check("--depfile", arguments.depfile);
}

void makeOutputFolder(const std::string& folder) {
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder, error)) {
        fs::create_directories(folder, error);
        if (error) {
            throw CLI::ValidationError("--out-dir", folder + ": " + error.message());
        }
    }
}

/// Runs every job, on this thread and others; true when all models were converted.
bool runJobs(std::span<const ConvertJob> jobs, std::size_t threadCount, ConvertRun& run) {
    ConvertConsole console(jobs);
    std::vector<FileReport> reports(jobs.size());
    std::mutex consoleMutex;
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t i = next++; i < jobs.size(); i = next++) {
            ConvertOutcome outcome = convertModel(jobs[i], run);
            reports[i] = std::move(outcome.report);
            const std::lock_guard lock(consoleMutex);
            console.ended(i, std::move(outcome));
        }
    };
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 1; i < std::min(threadCount, jobs.size()); ++i) {
            try {
                threads.emplace_back(work);
            } catch (const std::system_error&) {
                break;  // the threads that there are do the work
            }
        }
        work();
    }
    const bool converted = console.finish();
    if (run.report.json) {
        printText(jsonReport("convert", reports, run.report.werror));
    }
    return converted;
}

void convert(const ConvertArguments& arguments, Session& session) {
    checkOptionsForOneModel(arguments);
    ConvertRun run;
    run.report = arguments.report;
    run.style = styleFor(STDERR_FILENO, arguments.report.colour);
    const std::vector<ConvertJob> jobs = makeJobs(arguments, run);
    makeOutputFolder(arguments.outputFolder);
    const SignalWatch signalWatch(run.temporaryFiles);
    if (!runJobs(jobs, arguments.threads, run)) {
        session.status = ExitStatus::badInput;
    }
}

}  // namespace

void addConvert(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("convert", "Convert models into VXB files");
    const auto arguments = std::make_shared<ConvertArguments>();
    const auto option = [command](const char* name, auto& value, const char* valueName,
                                  const char* description) {
        return command->add_option(name, value, description)
            ->option_text(valueName)
            ->check([](const std::string& text) { return text.empty() ? "is empty" : ""; });
    };
    option("MODEL", arguments->models, "...", "The model files (.mqf)")->required();
    CLI::Option* output =
        option("-o", arguments->output, "FILE", "Name of the VXB file, taken as it stands");
    option("--out-dir", arguments->outputFolder, "DIR", "Folder for the VXB files")
        ->excludes(output);
    option("--scale", arguments->scale, "F", "Factor on every vertex coordinate");
    command->add_flag("--no-images", arguments->noImages, "Leave the images out");
    option("--hex", arguments->hex, "FILE", "Write every word as hex text too");
    option("--depfile", arguments->depfile, "FILE",
           "Write the inputs as a rule for Make and Ninja");
    option("--base", arguments->base, "DIR", "Open relative names in the model from this folder");
    command->add_flag("--lint", arguments->lint, "Report what converts but is surely not meant");
    addReportOptions(*command, arguments->report, lint::kinds);
    option("-j", arguments->threads, "N",
           "Convert this many models at a time (as many as there are processors)")
        ->check(CLI::Range(1U, 1024U));
    command->footer(convertExamples);
    command->callback([arguments, &session] { convert(*arguments, session); });
}

}  // namespace vxbtool
