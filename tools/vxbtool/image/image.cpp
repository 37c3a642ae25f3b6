#include "vxbtool/image/image.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "base/diagnostics.h"
#include "base/out_of_memory.h"
#include "files/disk_files.h"
#include "files/inputs.h"
#include "vxbtool/model_text/component_files.h"
#include "vxbtool/pictures/memory_map.h"
#include "vxbtool/pictures/options.h"
#include "vxbtool/pictures/placing.h"
#include "vxbtool/pictures/texel_budget.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/new_files.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/signals.h"
#include "vxbtool/shared/staged_outputs.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;

constexpr const char* imageExamples = R"(Examples:
  vxbtool image brick.png                 write brick.pxl, print its lines for the MQF file
  vxbtool image --out-dir art *.png       many, side by side in image memory
  vxbtool image --depth 8 --at 768,256 --clut-at 0,490 sky.jpg
                                          at a place of your choice)";

struct ImageArguments {
    std::vector<std::string> pictures;
    std::string folder;
    unsigned depth = 0;  ///< 0: whatever suits the picture
    std::string at;
    std::string clutAt;
    bool repeat = false;
    bool noDither = false;
    bool mark = false;
    bool force = false;
    pictures::PlacingOptions placing;
};

/// A picture of which no texture can be made.
class RefusedPicture : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The part of image memory from a place on: to the last column, and to the end of the upper or the
/// lower 512 lines, which the place lies in.
pictures::Area areaFrom(const std::string& option, const std::string& text) {
    constexpr std::uint32_t side = pictures::MemoryMap::side;
    const std::vector<std::uint32_t> place = pictures::parseNumbers(option, text, 2);
    if (place[0] >= side || place[1] >= side) {
        throw CLI::ValidationError(
            option,
            fmt::format("{} does not lie inside image memory of {} x {}", text, side, side));
    }
    const std::uint32_t end = place[1] < side / 2 ? side / 2 : side;
    return {place[0], place[1], side - place[0], end - place[1]};
}

pictures::PlacingOptions placingOf(const ImageArguments& arguments) {
    pictures::PlacingOptions options = arguments.placing;
    if (!arguments.at.empty()) {
        options.memory.textures = areaFrom("--at", arguments.at);
    }
    if (!arguments.clutAt.empty()) {
        options.memory.tables = areaFrom("--clut-at", arguments.clutAt);
        constexpr std::uint32_t step = 16;
        if (options.memory.tables->x % step != 0) {
            throw CLI::ValidationError("--clut-at", "the column has to be a multiple of 16");
        }
    }
    return options;
}

pictures::Colours coloursOf(unsigned depth) {
    switch (depth) {
    case 4: return pictures::Colours::sixteen;
    case 8: return pictures::Colours::many;
    case 16: return pictures::Colours::direct;
    default: return pictures::Colours::automatic;
    }
}

/// Whether a character ends a name in an MQF file.
bool endsName(char c) { return static_cast<unsigned char>(c) <= ' ' || c == 0x7F; }

/// The path of a picture's PXL file; its name is a single word.
std::string outputOf(const std::string& picture, const std::string& folder) {
    const fs::path path(picture);
    std::string name = printable(path.stem().string());
    std::ranges::replace_if(name, endsName, '_');
    return ((folder.empty() ? path.parent_path() : fs::path(folder)) / (name + ".pxl")).string();
}

/// The line of an MQF file that names a texture.
std::string textureLine(std::size_t number, const std::string& output) {
    return fmt::format("TEX[{}]={}\n", number, output);
}

std::vector<std::string> outputsOf(const ImageArguments& arguments) {
    std::vector<std::string> outputs;
    std::map<FilePlace, std::string> pictureOf;
    for (const std::string& picture : arguments.pictures) {
        outputs.push_back(outputOf(picture, arguments.folder));
        const std::string& output = outputs.back();
        if (std::ranges::any_of(output, endsName) || printable(output) != output) {
            throw CLI::ValidationError(
                "--out-dir",
                fmt::format("no MQF file can name {}: choose a folder without blanks", output));
        }
        if (textureLine(outputs.size() - 1, output).size() > mqf2vxb::longestLine) {
            throw CLI::ValidationError(
                "--out-dir",
                fmt::format("no line of an MQF file can hold {}: choose a shorter folder", output));
        }
        const auto [entry, isNew] = pictureOf.try_emplace(placeOf(outputs.back()), picture);
        if (!isNew) {
            throw CLI::ValidationError("PICTURE",
                                       fmt::format("{} and {} would both become {}", entry->second,
                                                   picture, outputs.back()));
        }
    }
    return outputs;
}

std::vector<pictures::WantedTexture> wantedTextures(const ImageArguments& arguments) {
    std::vector<pictures::WantedTexture> wanted;
    mqf2vxb::DiskInputFiles files;
    pictures::TexelBudget budget;
    const pictures::Edges edges =
        arguments.repeat ? pictures::Edges::repeat : pictures::Edges::clamp;
    for (const std::string& name : arguments.pictures) {
        try {
            pictures::Picture picture = pictures::readPictureFile(name, files, budget);
            const auto [width, height] = std::pair(picture.width, picture.height);
            wanted.push_back({pictures::shrunk(std::move(picture), edges),
                              {coloursOf(arguments.depth), !arguments.noDither, arguments.mark},
                              arguments.repeat,
                              width,
                              height});
        } catch (const pictures::PictureFault& fault) {
            throw RefusedPicture(fmt::format("{}: {}", name, fault.what()));
        }
    }
    return wanted;
}

/// The lines of the MQF file that name the textures, each below a comment that tells of it.
std::string modelLines(const pictures::Placing& placing, const std::vector<std::string>& outputs) {
    std::string text = fmt::format("NTEX={}\n", outputs.size());
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        text += fmt::format("# {}\n", placing.textures[placing.textureOf[i]].texture.comment);
        text += textureLine(i, outputs[i]);
    }
    return text;
}

void makeImages(const ImageArguments& arguments, const pictures::PlacingOptions& options,
                const std::vector<std::string>& outputs) {
    const pictures::Placing placing = pictures::place(wantedTextures(arguments), options);
    if (const auto replaced = replacedInput(arguments.pictures, outputs)) {
        throw RefusedPicture(
            fmt::format("{}: the picture is one of the outputs", replaced->output));
    }
    if (const std::string obstacle = prepareNewFiles(outputs, arguments.force); !obstacle.empty()) {
        throw RefusedPicture(obstacle);
    }
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    StagedOutputs staged(temporaryFiles, existingFiles(arguments.force));
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        model_text::TextFile file(staged, outputs[i]);
        model_text::writeTexture(placing.textures[placing.textureOf[i]].texture, file);
        file.close();
    }
    staged.commit();
    printText(modelLines(placing, outputs));
}

ExitStatus runImage(const ImageArguments& arguments) {
    const auto fail = [](const std::string& text) {
        fmt::print(stderr, "{}\n", printableLines(text));
        return ExitStatus::badInput;
    };
    const pictures::PlacingOptions options = placingOf(arguments);
    const std::vector<std::string> outputs = outputsOf(arguments);
    try {
        mqf2vxb::withMemory([&] { makeImages(arguments, options, outputs); });
    } catch (const RefusedPicture& refused) {
        return fail(refused.what());
    } catch (const pictures::PictureFault& fault) {
        return fail(fault.what());
    } catch (const mqf2vxb::Report& report) {
        return fail(fmt::format("{}{}{}", report.place().file,
                                report.place().file.empty() ? "" : ": ", report.cause()));
    }
    return ExitStatus::good;
}

}  // namespace

void addImage(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("image", "Make PXL files of pictures");
    const auto arguments = std::make_shared<ImageArguments>();
    command
        ->add_option("PICTURE", arguments->pictures,
                     "PNG, JPEG, TGA, BMP, GIF, PSD, PGM or PPM files")
        ->type_name("")
        ->required();
    command
        ->add_option("--out-dir", arguments->folder,
                     "Folder for the PXL files (that of each picture)")
        ->option_text("DIR");
    command
        ->add_option("--depth", arguments->depth,
                     "Bits of a texel (chosen for each picture by how near its colours come)")
        ->check(CLI::IsMember({4, 8, 16}));
    CLI::Option* memory = pictures::addPlacingOptions(*command, arguments->placing);
    command
        ->add_option("--at", arguments->at,
                     "Put textures from this column and line of image memory on")
        ->option_text("X,Y")
        ->excludes(memory);
    command
        ->add_option("--clut-at", arguments->clutAt,
                     "Put colour tables from this column and line on")
        ->option_text("X,Y");
    command->add_flag("--repeat", arguments->repeat,
                      "For windows: sides of 8 to 256 texels that are powers of two");
    command->add_flag("--no-dither", arguments->noDither,
                      "The nearest colour for each texel, no mixture");
    command->add_flag("--mark", arguments->mark, "Set the mark of every colour that is drawn");
    command->add_flag("--force", arguments->force, "Replace files that are there");
    command->footer(imageExamples);
    command->callback([arguments, &session] { session.status = runImage(*arguments); });
}

}  // namespace vxbtool
