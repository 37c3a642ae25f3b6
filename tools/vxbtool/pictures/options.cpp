#include "vxbtool/pictures/options.h"

#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

namespace vxbtool::pictures {

std::vector<std::uint32_t> parseNumbers(const std::string& option, const std::string& text,
                                        std::size_t count) {
    std::vector<std::uint32_t> numbers;
    std::string_view rest = text;
    for (;;) {
        std::uint16_t number = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        if (error != std::errc{} || (!rest.empty() && rest.front() != ',')) {
            break;
        }
        numbers.push_back(number);
        if (rest.empty()) {
            if (numbers.size() == count) {
                return numbers;
            }
            break;
        }
        rest.remove_prefix(1);
    }
    throw CLI::ValidationError(
        option,
        fmt::format("\"{}\" is not {} whole numbers with commas between them", text, count));
}

CLI::Option* addPlacingOptions(CLI::App& command, PlacingOptions& options) {
    command
        .add_option("--texture-size", options.largest, "Longest side of a texture in texels (256)")
        ->option_text("N")
        ->check(CLI::Range(8U, longestTexture));
    return command
        .add_option_function<std::string>(
            "--image-memory",
            [&options](const std::string& text) {
                const std::vector<std::uint32_t> n = parseNumbers("--image-memory", text, 4);
                options.memory.textures = {n[0], n[1], n[2], n[3]};
            },
            "Columns and lines for textures, colour tables in the last lines (640,0,384,512)")
        ->option_text("X,Y,W,H");
}

}  // namespace vxbtool::pictures
