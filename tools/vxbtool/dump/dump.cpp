#include "vxbtool/dump/dump.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

#include <CLI/CLI.hpp>

#include "vxbtool/shared/json_output.h"
#include "vxbtool/shared/vxb_input.h"

namespace vxbtool {
namespace {

constexpr const char* dumpExamples = R"(Examples:
  vxbtool dump car.vxb | less                every word of the file
  vxbtool dump --section packets car.vxb     the polygons alone
  vxbtool dump car.vxb | grep -B3 '\^'       what check found, with the words before
  vxbtool dump --json --section vertices car.vxb
                                             the vertices for another program)";

struct DumpArguments {
    std::string file;
    std::vector<std::string> sections;
    bool json = false;
};

std::vector<std::string> sectionNames() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < mqf2vxb::sectionNum; ++i) {
        names.emplace_back(sectionName(static_cast<mqf2vxb::Section>(i)));
    }
    return names;
}

ExitStatus runDump(const DumpArguments& arguments) {
    const std::optional<mqf2vxb::VxbFile> file = readForShow(arguments.file);
    if (!file) {
        return ExitStatus::badInput;
    }
    const WantedSections wanted(arguments.sections.begin(), arguments.sections.end());
    TextOutput text(stdout);
    if (arguments.json) {
        JsonOutput json(text);
        writeDump(arguments.file, *file, wanted, json);
    } else {
        writeDump(*file, wanted, text);
    }
    text.finish();
    return file->findings.count(mqf2vxb::Severity::error) > 0 ? ExitStatus::badInput
                                                              : ExitStatus::good;
}

}  // namespace

std::vector<mqf2vxb::Region> wantedRegions(const mqf2vxb::VxbFile& file,
                                           const WantedSections& wanted) {
    std::vector<mqf2vxb::Region> regions;
    for (const mqf2vxb::Region& region : file.regions) {
        if (wanted.empty() || wanted.contains(sectionName(sectionOf(region.part)))) {
            regions.push_back(region);
        }
    }
    return regions;
}

void addDump(CLI::App& app, Session& session) {
    CLI::App* command =
        app.add_subcommand("dump", "Show every word of a VXB file with its meaning");
    const auto arguments = std::make_shared<DumpArguments>();
    command->add_option("FILE", arguments->file, "The VXB file")->type_name("")->required();
    command->add_option("--section", arguments->sections, "Keep to this section; may be repeated")
        ->option_text("NAME")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all()
        ->check(CLI::IsMember(sectionNames()));
    command->add_flag("--json", arguments->json, "Print the decoded structure as JSON");
    command->footer(dumpExamples);
    command->callback([arguments, &session] { session.status = runDump(*arguments); });
}

}  // namespace vxbtool
