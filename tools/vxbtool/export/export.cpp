#include "vxbtool/export/export.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "vxbtool/gltf/gltf.h"
#include "vxbtool/scene/image_pictures.h"
#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/any_model.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/png.h"
#include "vxbtool/shared/signals.h"
#include "vxbtool/shared/staged_outputs.h"
#include "vxbtool/shared/standard_streams.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;
using mqf2vxb::VxbFile;

constexpr const char* exportExamples = R"(Examples:
  vxbtool export car.vxb                  write car.glb
  vxbtool export -o - car.vxb | less      write to standard output
  vxbtool export --unit 1 car.vxb         a unit of the file is a metre
  vxbtool export --textures art car.vxb   write the images too, art/image_0.png and so on, and
                                          all of image memory as art/memory.png)";

struct ExportArguments {
    std::string file;
    std::string output;
    std::string textures;
    gltf::GltfOptions gltf;
    bool noMotions = false;
    AnyModelOptions models;
};

/// What keeps every place and time of a file within what glTF's numbers hold.
constexpr double largestFactor = 1e9;

void checkFactor(const char* option, double value) {
    if (!(value >= 1 / largestFactor && value <= largestFactor)) {
        throw CLI::ValidationError(
            option, fmt::format("has to be from {} to {}", 1 / largestFactor, largestFactor));
    }
}

std::string outputName(const ExportArguments& arguments) {
    if (!arguments.output.empty()) {
        return outputPath(arguments.output);
    }
    return fs::path(arguments.file).replace_extension(".glb").string();
}

std::string pngFileOf(const scene::MemoryPicture& picture) {
    const std::span<const scene::Rgba> pixels(picture.pixels);
    return pngOf(picture.width, picture.height,
                 {reinterpret_cast<const std::uint8_t*>(pixels.data()), pixels.size_bytes()});
}

/// A file to write.
struct Output {
    std::string name;
    std::string bytes;
};

void addTextures(const std::string& folder, const VxbFile& file, const scene::Scene& scene,
                 std::vector<Output>& outputs) {
    const auto add = [&](const std::string& name, const scene::MemoryPicture& picture) {
        if (!picture.pixels.empty()) {
            outputs.push_back({(fs::path(folder) / name).string(), pngFileOf(picture)});
        }
    };
    const std::vector<scene::MemoryPicture> images = scene::imagePictures(file, scene);
    for (std::size_t i = 0; i < images.size(); ++i) {
        add(fmt::format("image_{}.png", i), images[i]);
    }
    add("memory.png", scene::memoryPicture(file, scene));
}

void makeFolder(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw std::runtime_error(
            fmt::format("{}: the folder cannot be made: {}", folder, error.message()));
    }
}

/// No output takes the place of a file that was read, or of another output.
void refuseReplacing(const std::vector<std::string>& inputs, const std::vector<Output>& outputs) {
    std::vector<std::string> names;
    std::set<FilePlace> places;
    for (const Output& output : outputs) {
        names.push_back(output.name);
        if (!places.insert(placeOf(output.name)).second) {
            throw NoModel(fmt::format("{}: two outputs would be this file", output.name));
        }
    }
    requireOthers(inputs, names);
}

void exportModel(const ExportArguments& arguments, const AnyModel& model) {
    const scene::Scene scene = scene::makeScene(model.file);
    for (const std::string& warning : scene.warnings) {
        printError(fmt::format("{}: {}", arguments.file, warning));
    }
    std::vector<Output> outputs{{outputName(arguments), gltf::glb(scene, arguments.gltf)}};
    if (!arguments.textures.empty()) {
        makeFolder(arguments.textures);
        addTextures(arguments.textures, model.file, scene, outputs);
    }
    refuseReplacing(model.inputs, outputs);
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    StagedOutputs staged(temporaryFiles);
    for (const Output& output : outputs) {
        staged.write(output.name, output.bytes);
    }
    staged.commit();
}

ExitStatus runExport(ExportArguments arguments) {
    checkFactor("--unit", arguments.gltf.unit);
    checkFactor("--fps", arguments.gltf.fps);
    if (arguments.file == "-" && arguments.output.empty()) {
        throw CLI::ValidationError("-o", "is needed for a file from standard input");
    }
    std::error_code notThere;
    if (fs::equivalent(arguments.file, outputName(arguments), notThere)) {
        throw CLI::ValidationError("-o", fmt::format("{} is the input", arguments.file));
    }
    arguments.gltf.motions = !arguments.noMotions;
    try {
        const AnyModel model = readAnyModel(arguments.file, arguments.models);
        requireSound(arguments.file, model.file);
        mqf2vxb::withMemory([&] { exportModel(arguments, model); });
        return ExitStatus::good;
    } catch (const mqf2vxb::Report& report) {
        printError(fmt::format("{}: {}", report.place().file, report.cause()));
    } catch (const CLI::Error&) {
        throw;
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return ExitStatus::badInput;
}

}  // namespace

void addExport(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("export", "Write a VXB file as glTF");
    const auto arguments = std::make_shared<ExportArguments>();
    command->add_option("FILE", arguments->file, "The VXB file, or a model (.mqf)")
        ->type_name("")
        ->required();
    command->add_option("-o", arguments->output, "The file to write (FILE's name and .glb)")
        ->option_text("FILE");
    command->add_option("--unit", arguments->gltf.unit, "Metres that a unit is (0.001)")
        ->option_text("F");
    command->add_option("--fps", arguments->gltf.fps, "Frames of a second of motions (30)")
        ->option_text("N");
    command->add_flag("--no-motions", arguments->noMotions, "Leave the motions out");
    command
        ->add_option("--textures", arguments->textures,
                     "Write the images, and all of image memory, as PNG files into this folder")
        ->option_text("DIR");
    addAnyModelOptions(*command, arguments->models);
    command->footer(exportExamples);
    command->callback([arguments, &session] { session.status = runExport(*arguments); });
}

}  // namespace vxbtool
