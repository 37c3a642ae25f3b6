#include "vxbtool/shared/any_model.h"

#include <filesystem>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/scale_option.h"
#include "vxbtool/shared/standard_streams.h"
#include "vxbtool/shared/vxb_input.h"

namespace vxbtool {

void addAnyModelOptions(CLI::App& command, AnyModelOptions& options) {
    command.add_option("--scale", options.scale, "Convert models with this factor")
        ->option_text("F");
    command.add_flag("--no-images", options.noImages, "Convert models without their images");
    command.add_option("--base", options.base, "Open relative names in models from this folder")
        ->option_text("DIR");
}

bool isModelFile(const std::string& name) {
    return std::filesystem::path(name).extension() == ".mqf";
}

AnyModel readAnyModel(const std::string& name, const AnyModelOptions& options) {
    if (!isModelFile(name)) {
        try {
            return {readVxbFile(name), {inputPath(name)}};
        } catch (const UnreadableFile& error) {
            throw NoModel(fmt::format("{}: the file cannot be read: {}", name, error.what()));
        }
    }
    mqf2vxb::RunOptions run;
    run.scale = parseScale(options.scale);
    run.imageOutput = !options.noImages;
    ModelFiles files(options.base);
    try {
        mqf2vxb::VxbFile file = mqf2vxb::readVxb(convertInMemory(name, run, files));
        return {std::move(file), files.opened()};
    } catch (const mqf2vxb::Report& report) {
        throw NoModel(fmt::format("{}: {}\n{}", name, report.cause(), report.text()));
    }
}

void requireOthers(std::span<const std::string> inputs, std::span<const std::string> outputs) {
    if (const auto replaced = replacedInput(inputs, outputs)) {
        throw NoModel(fmt::format("{}: it would be replaced by the output", replaced->input));
    }
}

void requireSound(const std::string& name, const mqf2vxb::VxbFile& file) {
    if (const std::size_t errors = file.findings.count(mqf2vxb::Severity::error); errors > 0) {
        throw NoModel(fmt::format("{}: no sound VXB file: {}; \"vxbtool check {}\" tells more",
                                  name, counted(errors, "error"), name));
    }
}

}  // namespace vxbtool
