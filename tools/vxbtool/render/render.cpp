#include "vxbtool/render/render.h"

#include <charconv>
#include <cmath>
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
#include "vxbtool/render/request.h"
#include "vxbtool/shared/any_model.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/staged_outputs.h"
#include "vxbtool/shared/standard_streams.h"

namespace vxbtool {
namespace {

using render::Request;

constexpr const char* renderExamples = R"(Examples:
  vxbtool render car.vxb -o car.png       a picture, seen from its front and left
  vxbtool render car.mqf -o car.png --turn 180 --tilt 5
                                          of a model, from behind
  vxbtool render car.vxb -o car.png --motion 0 --frame 45
                                          in motion 0, at frame 45
  vxbtool render car.vxb -o car.png --sheet 8 --size 1600x800
                                          from eight sides)";

struct RenderArguments {
    std::string file;
    std::string output;
    std::string size = "800x600";
    std::string background = "606870";
    AnyModelOptions models;
    Request request;
};

/// The whole text as a number; nothing when it is none.
std::optional<std::uint32_t> numberOf(std::string_view text, int base) {
    std::uint32_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc{} && stop == end ? std::optional(number) : std::nullopt;
}

void readSize(const std::string& text, Request& request) {
    const std::size_t x = text.find('x');
    const auto width = numberOf(std::string_view(text).substr(0, x), 10);
    const auto height =
        x == std::string::npos ? std::nullopt : numberOf(std::string_view(text).substr(x + 1), 10);
    if (!width || !height || *width == 0 || *height == 0) {
        throw CLI::ValidationError("--size",
                                   fmt::format("\"{}\" is no size such as 800x600", text));
    }
    if (*width > render::mostPixelsOfSide || *height > render::mostPixelsOfSide ||
        std::uint64_t{*width} * *height > render::mostPixels) {
        throw CLI::ValidationError(
            "--size", fmt::format("a picture has at most {} pixels on a side and {} in all",
                                  render::mostPixelsOfSide, render::mostPixels));
    }
    request.width = *width;
    request.height = *height;
}

void readBackground(const std::string& text, Request& request) {
    constexpr std::size_t digits = 6;
    constexpr std::uint32_t most = 0xFF;
    if (text == "transparent") {
        request.background.reset();
        return;
    }
    const std::string_view hex = std::string_view(text).substr(text.starts_with('#') ? 1 : 0);
    const auto colour = hex.size() == digits ? numberOf(hex, 16) : std::nullopt;
    if (!colour) {
        throw CLI::ValidationError(
            "--background",
            fmt::format(R"("{}" is neither "transparent" nor a colour such as 606870)", text));
    }
    request.background = {static_cast<std::uint8_t>(*colour >> 16U),
                          static_cast<std::uint8_t>(*colour >> 8U & most),
                          static_cast<std::uint8_t>(*colour & most)};
}

void checkNumbers(const Request& request) {
    for (const double number :
         {double{request.direction.turn}, double{request.direction.tilt}, request.frame}) {
        if (!std::isfinite(number)) {
            throw CLI::ValidationError(
                R"(--turn, --tilt and --frame take numbers, neither "inf" nor "nan")");
        }
    }
}

void renderFile(const RenderArguments& arguments) {
    const auto [file, inputs] = readAnyModel(arguments.file, arguments.models);
    const std::string output = outputPath(arguments.output);
    requireOthers(inputs, {&output, 1});
    requireSound(arguments.file, file);
    const scene::Scene scene = scene::makeScene(file);
    for (const std::string& warning : scene.warnings) {
        fmt::print(stderr, "{}: warning: {}\n", printable(arguments.file), printable(warning));
    }
    writeOutput(output, render::drawPng(scene, arguments.request));
}

ExitStatus runRender(RenderArguments& arguments) {
    readSize(arguments.size, arguments.request);
    readBackground(arguments.background, arguments.request);
    checkNumbers(arguments.request);
    std::error_code error;
    if (std::filesystem::equivalent(arguments.file, arguments.output, error)) {
        throw CLI::ValidationError("-o", fmt::format("{} is the input", arguments.output));
    }
    const auto failed = [](const std::string& text) {
        fmt::print(stderr, "{}\n", printableLines(text));
        return ExitStatus::badInput;
    };
    try {
        mqf2vxb::withMemory([&] { renderFile(arguments); });
    } catch (const NoModel& fault) {
        return failed(fault.what());
    } catch (const render::RenderFault& fault) {
        return failed(fmt::format("{}: no picture: {}", arguments.file, fault.what()));
    } catch (const mqf2vxb::Report& report) {
        return failed(fmt::format("{}: {}", report.place().file, report.cause()));
    }
    return ExitStatus::good;
}

}  // namespace

void addRender(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("render", "Draw a picture of a model");
    const auto arguments = std::make_shared<RenderArguments>();
    Request& request = arguments->request;
    const auto option = [command](const char* name, auto& value, const char* valueName,
                                  const char* description) {
        return command->add_option(name, value, description)->option_text(valueName);
    };
    option("FILE", arguments->file, "", "The VXB file, or a model (.mqf)")->required();
    option("-o", arguments->output, "FILE", "The PNG file")->required();
    option("--size", arguments->size, "WxH", "Pixels of the picture (800x600)");
    option("--turn", request.direction.turn, "DEGREES",
           "Side to look from: 0 front, 90 left, 180 rear (30)");
    option("--tilt", request.direction.tilt, "DEGREES", "Height to look from: 90 above (15)");
    CLI::Option* motion = option("--motion", request.motion, "N", "Show the model in this motion");
    option("--frame", request.frame, "F", "Frame of the motion (0)")
        ->needs(motion)
        ->check(CLI::NonNegativeNumber);
    option("--sheet", request.views, "N", "Show it from N sides around it")
        ->check(CLI::Range(1U, render::mostViews));
    option("--focus", request.focus, "N", "Fit the picture to this coordinate and those below it");
    option("--background", arguments->background, "COLOUR",
           "Red, green and blue as RRGGBB, or \"transparent\"");
    command->add_flag("--two-sided", request.twoSides,
                      "Draw triangles that face away from the viewer too");
    addAnyModelOptions(*command, arguments->models);
    command->footer(renderExamples);
    command->callback([arguments, &session] { session.status = runRender(*arguments); });
}

}  // namespace vxbtool
