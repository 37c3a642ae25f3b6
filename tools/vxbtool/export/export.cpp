#include "vxbtool/export/export.h"

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
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

void checkPositive(const char* option, double value) {
    if (!(value > 0) || !std::isfinite(value)) {
        throw CLI::ValidationError(option, "has to be greater than 0");
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

void writeTextures(const std::string& folder, const VxbFile& file, const scene::Scene& scene,
                   StagedOutputs& outputs) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw std::runtime_error(
            fmt::format("{}: the folder cannot be made: {}", folder, error.message()));
    }
    const auto put = [&](const std::string& name, const scene::MemoryPicture& picture) {
        if (!picture.pixels.empty()) {
            outputs.write((fs::path(folder) / name).string(), pngFileOf(picture));
        }
    };
    const std::vector<scene::MemoryPicture> images = scene::imagePictures(file, scene);
    for (std::size_t i = 0; i < images.size(); ++i) {
        put(fmt::format("image_{}.png", i), images[i]);
    }
    put("memory.png", scene::memoryPicture(file, scene));
}

void exportFile(const ExportArguments& arguments, const VxbFile& file) {
    const scene::Scene scene = scene::makeScene(file);
    for (const std::string& warning : scene.warnings) {
        printError(fmt::format("{}: {}", arguments.file, warning));
    }
    const std::string bytes = gltf::glb(scene, arguments.gltf);
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    StagedOutputs outputs(temporaryFiles);
    outputs.write(outputName(arguments), bytes);
    if (!arguments.textures.empty()) {
        writeTextures(arguments.textures, file, scene, outputs);
    }
    outputs.commit();
}

ExitStatus runExport(ExportArguments arguments) {
    checkPositive("--unit", arguments.gltf.unit);
    checkPositive("--fps", arguments.gltf.fps);
    if (arguments.file == "-" && arguments.output.empty()) {
        throw CLI::ValidationError("-o", "is needed for a file from standard input");
    }
    std::error_code notThere;
    if (fs::equivalent(arguments.file, outputName(arguments), notThere)) {
        throw CLI::ValidationError("-o", fmt::format("{} is the input", arguments.file));
    }
    arguments.gltf.motions = !arguments.noMotions;
    try {
        const VxbFile file = readAnyModel(arguments.file, arguments.models, outputName(arguments));
        requireSound(arguments.file, file);
        mqf2vxb::withMemory([&] { exportFile(arguments, file); });
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
