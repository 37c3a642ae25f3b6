#include "vxbtool/unpack/unpack.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
#include "vxbtool/check/check.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/shared/new_files.h"
#include "vxbtool/shared/signals.h"
#include "vxbtool/shared/staged_outputs.h"
#include "vxbtool/shared/text_output.h"
#include "vxbtool/shared/vxb_input.h"
#include "vxbtool/unpack/unpack_model.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;
using mqf2vxb::VxbFile;

constexpr const char* unpackExamples = R"(Examples:
  vxbtool unpack car.vxb                  write car/car.mqf and the files that it names
  vxbtool unpack --verify car.vxb         and tell whether they make the same words again
  vxbtool unpack --out-dir art --name truck car.vxb
                                          write art/truck.mqf and so on)";

struct UnpackArguments {
    std::string file;
    std::string folder;
    std::string name;
    bool verify = false;
    bool force = false;
};

/// The name of the model: what the file is called, unless the command line says.
std::string modelName(const UnpackArguments& arguments) {
    if (!arguments.name.empty()) {
        return arguments.name;
    }
    return arguments.file == "-" ? "" : fs::path(arguments.file).stem().string();
}

std::string folderOf(const UnpackArguments& arguments, const std::string& name) {
    return arguments.folder.empty() ? (fs::path(arguments.file).parent_path() / name).string()
                                    : arguments.folder;
}

/// A word with its meaning.
std::string wordText(const VxbFile& file, std::uint32_t offset) {
    const mqf2vxb::Region* region = file.regionAt(offset);
    if (region == nullptr) {
        return "no word";
    }
    std::string text;
    mqf2vxb::describeRegion(file, *region, [&](const mqf2vxb::WordMeaning& word) {
        if (word.offset == offset) {
            text = fmt::format("{:08x} ({}: {}{}{})", word.value, mqf2vxb::placeName(file, offset),
                               word.name, word.meaning.empty() ? "" : ": ", word.meaning);
        }
    });
    return text;
}

/// Converts the unpacked model in memory; true when it makes the words of the file again, else the
/// first word that differs is told.
bool verify(const VxbFile& file, const unpack::UnpackedModel& model, const std::string& name) {
    MemoryFiles files;
    model_text::writeModelFiles(model.text, "", name, files);
    mqf2vxb::RunOptions options;
    options.imageOutput = !model.withoutImages;
    const VxbFile again = mqf2vxb::readVxb(
        convertInMemory(model_text::fileNames(model.text, name).front(), options, files));
    const auto [one, other] = std::ranges::mismatch(file.words, again.words);
    if (one == file.words.end() && other == again.words.end()) {
        return true;
    }
    const auto offset = static_cast<std::uint32_t>(one - file.words.begin());
    printError(fmt::format("{}: the model makes other words from word {} on: {} became {}", name,
                           offset, wordText(file, offset), wordText(again, offset)));
    return false;
}

ExitStatus unpackFile(const UnpackArguments& arguments, const VxbFile& file,
                      const std::string& name) {
    const std::string folder = folderOf(arguments, name);
    const unpack::UnpackedModel model = unpack::unpackModel(file);
    std::vector<std::string> paths = model_text::fileNames(model.text, name);
    for (std::string& path : paths) {
        path = (fs::path(folder) / path).string();
    }
    if (const auto replaced = replacedInput({&arguments.file, 1}, paths)) {
        printError(fmt::format("{}: it would be replaced by the output", arguments.file));
        return ExitStatus::badInput;
    }
    if (const std::string why = prepareNewFiles(paths, arguments.force); !why.empty()) {
        printError(why);
        return ExitStatus::badInput;
    }
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    StagedOutputs outputs(temporaryFiles, existingFiles(arguments.force));
    model_text::writeModelFiles(model.text, folder, name, outputs);
    outputs.commit();
    return !arguments.verify || verify(file, model, name) ? ExitStatus::good : ExitStatus::badInput;
}

ExitStatus runUnpack(const UnpackArguments& arguments) {
    const std::string name = modelName(arguments);
    if (!model_text::isModelName(name)) {
        throw CLI::ValidationError(
            "--name", fmt::format("\"{}\" cannot be the name of a model's files", name));
    }
    if (arguments.file == "-" && arguments.folder.empty()) {
        throw CLI::ValidationError("--out-dir", "is needed for a file from standard input");
    }
    try {
        const VxbFile file = readVxbFile(arguments.file);
        if (file.findings.count(mqf2vxb::Severity::error) > 0) {
            const FileReport report = reportOn(file, arguments.file, {});
            fmt::print(stderr, "{}", humanReport({&report, 1}, styleFor(STDERR_FILENO, "auto")));
            return ExitStatus::badInput;
        }
        ExitStatus status = ExitStatus::good;
        mqf2vxb::withMemory([&] { status = unpackFile(arguments, file, name); });
        return status;
    } catch (const UnreadableFile& error) {
        printError(fmt::format("{}: the file cannot be read: {}", arguments.file, error.what()));
    } catch (const mqf2vxb::Report& report) {
        printError(fmt::format("{}: {}", report.place().file, report.cause()));
    }
    return ExitStatus::badInput;
}

}  // namespace

void addUnpack(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("unpack", "Write the model that a VXB file was made of");
    const auto arguments = std::make_shared<UnpackArguments>();
    command->add_option("FILE", arguments->file, "The VXB file")->type_name("")->required();
    command
        ->add_option("--out-dir", arguments->folder,
                     "Folder for the files (one beside FILE, with the model's name)")
        ->option_text("DIR");
    command->add_option("--name", arguments->name, "Name of the model (that of FILE)")
        ->option_text("NAME");
    command->add_flag("--verify", arguments->verify,
                      "Convert the model in memory and compare its words");
    command->add_flag("--force", arguments->force, "Replace files that are there");
    command->footer(unpackExamples);
    command->callback([arguments, &session] { session.status = runUnpack(*arguments); });
}

}  // namespace vxbtool
