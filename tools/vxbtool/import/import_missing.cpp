// Takes the place of "vxbtool import" in a build without the libraries that it stands on.

#include "vxbtool/import/import.h"

#include <cstdio>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

namespace vxbtool {

void addImport(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand(
        "import", "Write a model from another program's file (not in this build)");
    command->allow_extras();
    command->callback([&session] {
        fmt::print(
            stderr,
            "This vxbtool was built without import: install libassimp-dev, libstb-dev, "
            "libimagequant-dev and\nlibmeshoptimizer-dev (scripts/install-packages.sh tools), "
            "and build it with MQF2VXB_BUILD_IMPORT=ON.\n");
        session.status = ExitStatus::badUsage;
    });
}

}  // namespace vxbtool
