#include "vxbtool/import/import.h"

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "vxbtool/import/nodes.h"
#include "vxbtool/import/source.h"

namespace vxbtool {

void addImport(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("import", "Write a model from another program's file");
    const auto file = std::make_shared<std::string>();
    command->add_option("FILE", *file, "The model")->type_name("")->required();
    command->callback([file, &session] {
        try {
            const importing::Source source = importing::Source::load(*file, {});
            const importing::CoordinateMap map = importing::mapCoordinates(source.scene(), true);
            const importing::PlacedCoordinates placed = importing::placeCoordinates(map, 1000);
            fmt::print("{}\n", placed.coordinates.size());
        } catch (const importing::ImportFault& fault) {
            fmt::print(stderr, "{}: {}\n", *file, fault.what());
            session.status = ExitStatus::badInput;
        }
    });
}

}  // namespace vxbtool
