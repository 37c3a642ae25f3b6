#include "vxbtool/import/import.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "vxbtool/import/guarded.h"
#include "vxbtool/import/import_model.h"
#include "vxbtool/import/progress_line.h"
#include "vxbtool/import/report.h"
#include "vxbtool/import/source.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/pictures/options.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/shared/new_files.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/signals.h"
#include "vxbtool/shared/staged_outputs.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;
using importing::ImportedModel;
using importing::ImportFault;
using importing::Source;

constexpr const char* importExamples = R"(Examples:
  vxbtool import car.glb                  write car/car.mqf and the files that it names
  vxbtool import --fit --convert car.fbx  at a scale that fits, and car/car.vxb too
  vxbtool import --triangles 2000 --texture-size 64 --out-dir art car.obj
                                          with less of both, in art)";

struct ImportArguments {
    std::string file;
    std::string folder;
    std::string name;
    std::string colours = "auto";
    std::string up = "y";
    bool convert = false;
    bool force = false;
    bool json = false;
    bool noMotions = false;
    std::size_t triangles = 0;
    double fps = 0;
    importing::ImportOptions options;
};

/// The name of the model: what the file is called, in characters that a model's name can have.
std::string importName(const ImportArguments& arguments) {
    if (!arguments.name.empty()) {
        if (!model_text::isModelName(arguments.name)) {
            throw CLI::ValidationError(
                "--name",
                fmt::format("\"{}\" cannot be the name of a model's files", arguments.name));
        }
        return arguments.name;
    }
    std::string name = fs::path(arguments.file).stem().string();
    std::ranges::replace_if(
        name, [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '.' || c == 0x7F; },
        '_');
    return model_text::isModelName(name) ? name : "model";
}

importing::ImportOptions optionsOf(const ImportArguments& arguments) {
    importing::ImportOptions options = arguments.options;
    options.motions = !arguments.noMotions;
    if (arguments.triangles > 0) {
        options.shape.triangles = arguments.triangles;
    }
    if (arguments.fps > 0) {
        options.fps = arguments.fps;
    }
    options.up = arguments.up == "z" ? importing::UpAxis::z : importing::UpAxis::y;
    using pictures::Colours;
    options.textures.colours = arguments.colours == "16"       ? Colours::sixteen
                               : arguments.colours == "256"    ? Colours::many
                               : arguments.colours == "direct" ? Colours::direct
                                                               : Colours::automatic;
    return options;
}

/// The paths of what is written, the MQF file first.
std::vector<std::string> importOutputs(const ImportArguments& arguments, const ImportedModel& model,
                                       const std::vector<std::string>& inputs,
                                       const std::string& folder, const std::string& name) {
    std::vector<std::string> paths = model_text::fileNames(model.text, name);
    if (arguments.convert) {
        paths.push_back(name + ".vxb");
    }
    for (std::string& path : paths) {
        path = (fs::path(folder) / path).string();
    }
    if (const auto replaced = replacedInput(inputs, paths)) {
        throw ImportFault(fmt::format("{} would be replaced by the output {}",
                                      replaced->input == arguments.file ? "it" : replaced->input,
                                      replaced->output));
    }
    return paths;
}

std::string converted(const ImportedModel& model, const std::string& name) {
    MemoryFiles files;
    model_text::writeModelFiles(model.text, "", name, files);
    return convertInMemory(model_text::fileNames(model.text, name).front(), {}, files);
}

/// Adds the files that are read to `inputs`.
ImportedModel importFile(const ImportArguments& arguments, const importing::ImportOptions& options,
                         std::vector<std::string>& inputs) {
    importing::ProgressLine progress(arguments.file);
    progress.step("reading");
    const Source source = [&] {
        importing::ReadingLimits limits;
        importing::SourceOptions reading;
        reading.motions = options.motions;
        reading.opening = [&](const std::string& file, std::uint64_t bytes) {
            inputs.push_back(file);
            limits.add(bytes);
        };
        reading.goOn = [&] {
            progress.tick();
            return true;
        };
        return Source::load(arguments.file, reading);
    }();
    return importing::importModel(source, arguments.file, options,
                                  [&](const char* what) { progress.step(what); });
}

void importAndWrite(const ImportArguments& arguments, const importing::ImportOptions& options,
                    const std::string& name) {
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    std::vector<std::string> inputs{arguments.file};
    const ImportedModel model = importFile(arguments, options, inputs);
    const std::string folder = arguments.folder.empty()
                                   ? (fs::path(arguments.file).parent_path() / name).string()
                                   : arguments.folder;
    importing::WrittenFiles written;
    written.source = arguments.file;
    written.files = importOutputs(arguments, model, inputs, folder, name);
    written.model = written.files.front();
    const std::string vxb = arguments.convert ? converted(model, name) : "";
    if (const std::string why = prepareNewFiles(written.files, arguments.force); !why.empty()) {
        throw ImportFault(why);
    }
    StagedOutputs outputs(temporaryFiles, existingFiles(arguments.force));
    if (arguments.convert) {
        outputs.write(written.files.back(), vxb);
    }
    model_text::writeModelFiles(model.text, folder, name, outputs);
    outputs.commit();
    if (arguments.json) {
        TextOutput output(stdout);
        importing::writeJsonReport(written, model.report, output);
    } else {
        printText(importing::humanReport(written, model.report));
    }
}

ExitStatus runImport(const ImportArguments& arguments) {
    const std::string name = importName(arguments);
    const importing::ImportOptions options = optionsOf(arguments);
    const auto fail = [&](const std::string& file, const std::string& cause) {
        fmt::print(stderr, "{}\n", printableLines(fmt::format("{}: {}", file, cause)));
        return static_cast<int>(ExitStatus::badInput);
    };
    const auto work = [&] {
        try {
            mqf2vxb::withMemory([&] { importAndWrite(arguments, options, name); });
        } catch (const ImportFault& fault) {
            return fail(arguments.file, fault.what());
        } catch (const mqf2vxb::Report& report) {
            const std::string& file = report.place().file;
            return fail(file.empty() ? arguments.file : file, report.cause());
        }
        return static_cast<int>(ExitStatus::good);
    };
    return static_cast<ExitStatus>(importing::runGuarded(
        work, [&](const std::string& cause) { return fail(arguments.file, cause); }));
}

void addSurfaceOptions(CLI::App& command, ImportArguments& arguments) {
    command.add_option("--scale", arguments.options.scale, "Units for one of the source (1000)")
        ->option_text("F")
        ->check(CLI::Range(1e-9, 1e12).description(""));
    command.add_flag("--fit", arguments.options.fit,
                     "Take the largest scale that fits where --scale is too large");
    command.add_option("--up", arguments.up, "The source's axis that points up: y or z (y)")
        ->option_text("AXIS")
        ->check(CLI::IsMember({"y", "z"}).description(""));
    command.add_option("--triangles", arguments.triangles, "Simplify to at most so many triangles")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 30U).description(""));
    command
        .add_option("--smooth-angle", arguments.options.shape.smoothAngle,
                    "Round edges up to so many degrees, of meshes without normals (40)")
        ->option_text("DEGREES")
        ->check(CLI::Range(0.0, 180.0).description(""));
    command.add_flag("--unlit", arguments.options.unlit, "No light falls on any polygon");
    command.add_flag("--strips", arguments.options.strips,
                     "Put triangles into strips (a BND file)");
}

}  // namespace

void addImport(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("import", "Write a model from another program's file");
    const auto arguments = std::make_shared<ImportArguments>();
    command->add_option("MODEL", arguments->file, "The file, in any format that Assimp reads")
        ->type_name("")
        ->required();
    command
        ->add_option("--out-dir", arguments->folder,
                     "Folder for the files (one beside MODEL, with the model's name)")
        ->option_text("DIR");
    command->add_option("--name", arguments->name, "Name of the model (that of MODEL)")
        ->option_text("NAME");
    addSurfaceOptions(*command, *arguments);
    command
        ->add_option("--colours", arguments->colours,
                     "Colours of textures: 16, 256, direct or auto (by error)")
        ->option_text("N")
        ->check(CLI::IsMember({"16", "256", "direct", "auto"}).description(""));
    pictures::addPlacingOptions(*command, arguments->options.textures.placing);
    command->add_flag("--no-motions", arguments->noMotions, "Leave animations out");
    command
        ->add_option("--fps", arguments->fps,
                     "Steps a second of motions, instead of those of the source's keys")
        ->option_text("N")
        ->check(CLI::Range(1.0, 30.0).description(""));
    command->add_flag("--convert", arguments->convert, "Write NAME.vxb too");
    command->add_flag("--force", arguments->force, "Replace files that are there");
    command->add_flag("--json", arguments->json, "Report as JSON");
    command->footer(importExamples);
    command->callback([arguments, &session] { session.status = runImport(*arguments); });
}

}  // namespace vxbtool
