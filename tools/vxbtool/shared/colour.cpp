#include "vxbtool/shared/colour.h"

#include <cstdlib>
#include <string_view>

#include <unistd.h>

#include <CLI/CLI.hpp>

namespace vxbtool {
namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nothing sets it
    return value == nullptr ? std::string_view() : value;
}

}  // namespace

void addColourOption(CLI::App& app, std::string& when) {
    app.add_option("--colour", when, "Colours: auto (on a terminal), always or never")
        ->option_text("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
}

TextStyle styleFor(int descriptor, const std::string& when) {
    const bool terminal = ::isatty(descriptor) != 0;
    const bool wanted =
        terminal && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
    return {terminal, when == "always" || (when == "auto" && wanted)};
}

}  // namespace vxbtool
