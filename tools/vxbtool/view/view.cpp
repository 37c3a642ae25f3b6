#include "vxbtool/view/view.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "vxbtool/gltf/gltf.h"
#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/any_model.h"
#include "vxbtool/shared/staged_outputs.h"
#include "vxbtool/shared/standard_streams.h"
#include "vxbtool/shared/text_output.h"
#include "vxbtool/view/open_page.h"
#include "vxbtool/view/page.h"
#include "vxbtool/view/page_data.h"
#include "vxbtool/view/page_template.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;
using mqf2vxb::VxbFile;

constexpr const char* viewExamples = R"(Examples:
  vxbtool view car.vxb                    write car.html, which shows the model in a browser
  vxbtool view --open car.vxb             and show it
  vxbtool view -o look.html car.mqf       convert a model in memory and write its page)";

struct ViewArguments {
    std::string file;
    std::string output;
    bool open = false;
    AnyModelOptions models;
};

std::string outputOf(const ViewArguments& arguments) {
    if (arguments.output == "-" && arguments.open) {
        throw CLI::ValidationError("--open", "shows a file, not standard output");
    }
    if (!arguments.output.empty()) {
        return outputPath(arguments.output);
    }
    if (arguments.file == "-") {
        throw CLI::ValidationError("-o", "is needed for a file from standard input");
    }
    return fs::path(arguments.file).replace_extension(".html").string();
}

/// The model as the page is called.
std::string pageName(const std::string& file) {
    return file == "-" ? "standard input" : fs::path(file).filename().string();
}

std::string pageOf(std::string_view pageTemplate, const VxbFile& file, const std::string& name) {
    const scene::Scene scene = scene::makeScene(file);
    const gltf::GltfOptions options;
    return view::filledPage(pageTemplate, view::pageData(file, scene, name, options.fps),
                            gltf::glb(scene, options));
}

/// Writes the page of what can be read; a file with errors is told of.
ExitStatus viewModel(const ViewArguments& arguments, const std::string& output) {
    const std::optional<std::string_view> pageTemplate = view::pageTemplate();
    if (!pageTemplate) {
        printError("this vxbtool was built without the page: it needs npm when it is built, and "
                   "-DMQF2VXB_BUILD_VIEWER=ON");
        return ExitStatus::badInput;
    }
    const AnyModel model = readAnyModel(arguments.file, arguments.models);
    const VxbFile& file = model.file;
    requireOthers(model.inputs, {&output, 1});
    mqf2vxb::withMemory(
        [&] { writeOutput(output, pageOf(*pageTemplate, file, pageName(arguments.file))); });
    ExitStatus status = ExitStatus::good;
    if (file.findings.count(mqf2vxb::Severity::error) > 0) {
        printError(
            fmt::format("{0}: the file has errors, so that what the page shows may be wrong; "
                        "\"vxbtool check {0}\" tells more",
                        arguments.file));
        status = ExitStatus::badInput;
    }
    if (arguments.open) {
        if (const std::string why = view::openPage(output); !why.empty()) {
            printError(fmt::format("{}: {}", output, why));
            status = ExitStatus::badInput;
        }
    }
    return status;
}

ExitStatus runView(const ViewArguments& arguments) {
    const std::string output = outputOf(arguments);
    std::error_code error;
    if (fs::equivalent(arguments.file, output, error)) {
        throw CLI::ValidationError("-o", fmt::format("{} is the input", output));
    }
    try {
        return viewModel(arguments, output);
    } catch (const NoModel& trouble) {
        printError(trouble.what());
    } catch (const mqf2vxb::Report& report) {
        printError(fmt::format("{}: {}", report.place().file, report.cause()));
    }
    return ExitStatus::badInput;
}

}  // namespace

void addView(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("view", "Write a page that shows a model in a browser");
    const auto arguments = std::make_shared<ViewArguments>();
    command
        ->add_option("FILE", arguments->file, "A VXB file, or a model (.mqf), which is converted")
        ->type_name("")
        ->required();
    command->add_option("-o", arguments->output, "Name of the page (that of FILE with .html)")
        ->option_text("FILE");
    command->add_flag("--open", arguments->open, "Show the page when it is written");
    addAnyModelOptions(*command, arguments->models);
    command->footer(viewExamples);
    command->callback([arguments, &session] { session.status = runView(*arguments); });
}

}  // namespace vxbtool
