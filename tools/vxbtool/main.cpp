// vxbtool: the companion of mqf2vxb, one program with subcommands.
//
// Each subcommand has a folder, in which `void addName(CLI::App& app, Session& session)` adds it with
// its options, a description and a footer of examples, and a callback that does the work and sets
// session.status; CLI::ValidationError thrown from the callback is bad usage. CONTRIBUTING.md tells
// what else a new one needs.

#include <cstdio>
#include <exception>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "run/process.h"
#include "vxbtool/check/check.h"
#include "vxbtool/completion/completion.h"
#include "vxbtool/convert/convert.h"
#include "vxbtool/diff/diff.h"
#include "vxbtool/dump/dump.h"
#include "vxbtool/export/export.h"
#include "vxbtool/finding_catalogue/finding_catalogue.h"
#include "vxbtool/image/image.h"
#include "vxbtool/import/import.h"
#include "vxbtool/info/info.h"
#include "vxbtool/lint/lint.h"
#include "vxbtool/packet_forms/packet_form_tables.h"
#include "vxbtool/render/render.h"
#include "vxbtool/shared/closest.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/session.h"
#include "vxbtool/shared/text_output.h"
#include "vxbtool/unpack/unpack.h"
#include "vxbtool/view/view.h"

namespace vxbtool {
namespace {

constexpr const char* examples = R"(Examples:
  vxbtool convert car.mqf                 write car.vxb
  vxbtool convert --out-dir out *.mqf     convert many models, side by side
  vxbtool lint car.mqf                    what in the model is surely not meant?
  vxbtool check car.vxb                   is the file sound?
  vxbtool info car.vxb                    what does it hold?
  vxbtool dump car.vxb                    what does each word say?
  vxbtool diff old.vxb new.vxb            what became of the model?
  vxbtool unpack car.vxb                  write the model that it was made of
  vxbtool export car.vxb                  write car.glb for programs that show or edit models
  vxbtool view --open car.vxb             a page to look at it from all sides
  vxbtool render car.vxb -o car.png       what does it look like?
  vxbtool image brick.png                 make a PXL file of a picture
  vxbtool import car.glb                  write a model from another program's file

"vxbtool COMMAND --help" tells more about one command, "man vxbtool" about all.
Exit status: 0 all went well, 1 bad input, 2 bad usage; of diff 0 equal, 1 different, 2 trouble.)";

/// What the first argument that nothing takes was probably meant to be.
std::string guess(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const std::vector<std::string> left = app.remaining();
    return left.empty() ? "" : didYouMean(left.front().substr(0, left.front().find('=')), names);
}

/// What a usage error prints: the fault and where to read on.
std::string usageFault(const CLI::App* app, const CLI::Error& error) {
    const std::vector<CLI::App*> commands = app->get_subcommands();
    const std::string command = commands.empty() ? "" : " " + commands.front()->get_name();
    const CLI::App& used = commands.empty() ? *app : *commands.front();
    const std::vector<std::string> left = used.remaining();
    const std::string fault = commands.empty() && !left.empty()
                                  ? fmt::format("\"{}\" is no command", left.front())
                                  : error.what();
    return fmt::format("vxbtool{0}: {1}{2}\nTry \"vxbtool{0} --help\".\n", command,
                       printableLines(fault), guess(used));
}

/// Refuses "--name=" without a value, for which the parser would take the next argument.
void requireValues(std::span<const char* const> arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--") {
            return;
        }
        if (argument.starts_with("--") && argument.find('=') == argument.size() - 1) {
            throw CLI::ArgumentMismatch(std::string(argument) + " has no value");
        }
    }
}

int runCommandLine(int argumentCount, const char* const* arguments) {
    Session session;
    CLI::App app("Converts 3-D models to VXB files and looks after such files.", "vxbtool");
    app.set_version_flag("--version", "vxbtool " VXBTOOL_VERSION);
    app.footer(examples);
    app.require_subcommand(1);
    app.failure_message(usageFault);
    app.get_formatter()->column_width(28);

    addConvert(app, session);
    addLint(app, session);
    addCheck(app, session);
    addInfo(app, session);
    addDump(app, session);
    addDiff(app, session);
    addUnpack(app, session);
    addExport(app, session);
    addView(app, session);
    addRender(app, session);
    addImport(app, session);
    addImage(app, session);
    addCompletion(app, session);
    addFindingCatalogue(app, session);
    addPacketFormTables(app, session);

    try {
        requireValues({arguments, static_cast<std::size_t>(argumentCount)});
        app.parse(argumentCount, arguments);
    } catch (const CLI::ParseError& error) {
        // "--help" and "--version" come as errors too, with the exit code 0.
        std::ostringstream output;
        const bool failed = app.exit(error, output) != 0;
        printText(output.str());
        return static_cast<int>(failed ? ExitStatus::badUsage : ExitStatus::good);
    }
    return static_cast<int>(session.status);
}

}  // namespace
}  // namespace vxbtool

int main(int argumentCount, char** arguments) {
    mqf2vxb::guardOutputs();
    try {
        const int status = vxbtool::runCommandLine(argumentCount, arguments);
        // Warnings that were to be seen went nowhere; there is no place left to tell so.
        const bool untold = status == 0 && std::ferror(stderr) != 0;
        return untold ? static_cast<int>(vxbtool::ExitStatus::badInput) : status;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vxbtool: %s\n", vxbtool::printableLines(error.what()).c_str());
        return static_cast<int>(vxbtool::ExitStatus::badInput);
    }
}
