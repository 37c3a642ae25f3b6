#include "vxbtool/info/info.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>

#include "vxbtool/shared/json_output.h"
#include "vxbtool/shared/vxb_input.h"

namespace vxbtool {
namespace {

constexpr const char* infoExamples = R"(Examples:
  vxbtool info car.vxb                    what does the file hold?
  vxbtool info out/*.vxb | less           look through many
  vxbtool info --json car.vxb | jq '.files[0].polygons.number')";

struct InfoArguments {
    std::vector<std::string> files;
    bool json = false;
};

ExitStatus runInfo(const InfoArguments& arguments) {
    ExitStatus status = ExitStatus::good;
    TextOutput text(stdout);
    JsonOutput json(text);
    if (arguments.json) {
        json.openObject();
        json.member("format", "vxbtool-info");
        json.member("version", 1);
        json.openArray("files");
    }
    bool first = true;
    for (const std::string& name : arguments.files) {
        const std::optional<mqf2vxb::VxbFile> file = readForShow(name);
        if (!file || file->findings.count(mqf2vxb::Severity::error) > 0) {
            status = ExitStatus::badInput;
        }
        if (file && arguments.json) {
            writeInfo(name, *file, json);
        } else if (file) {
            text.put(first ? "" : "\n");
            first = false;
            writeInfo(name, *file, text);
        }
    }
    if (arguments.json) {
        json.close();
        json.close();
    }
    text.finish();
    return status;
}

}  // namespace

void addInfo(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("info", "Summarise VXB files");
    const auto arguments = std::make_shared<InfoArguments>();
    command->add_option("FILE", arguments->files, "VXB files to look at")
        ->type_name("")
        ->required();
    command->add_flag("--json", arguments->json, "Print JSON");
    command->footer(infoExamples);
    command->callback([arguments, &session] { session.status = runInfo(*arguments); });
}

}  // namespace vxbtool
