// Takes the places of "vxbtool import" and "vxbtool image" in a build without the libraries that they
// stand on.

#include <cstdio>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "vxbtool/image/image.h"
#include "vxbtool/import/import.h"

namespace vxbtool {
namespace {

void addMissing(const char* name, const char* description, CLI::App& app, Session& session) {
    CLI::App* command =
        app.add_subcommand(name, fmt::format("{} (not in this build)", description));
    command->allow_extras();
    command->callback([name, &session] {
        fmt::print(
            stderr,
            "This vxbtool was built without {}: install libassimp-dev, libstb-dev, "
            "libimagequant-dev and\nlibmeshoptimizer-dev (scripts/install-packages.sh tools), "
            "and build it with MQF2VXB_BUILD_IMPORT=ON.\n",
            name);
        session.status = ExitStatus::badUsage;
    });
}

}  // namespace

void addImport(CLI::App& app, Session& session) {
    addMissing("import", "Write a model from another program's file", app, session);
}

void addImage(CLI::App& app, Session& session) {
    addMissing("image", "Make PXL files of pictures", app, session);
}

}  // namespace vxbtool
