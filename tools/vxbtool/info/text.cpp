// One screen for people about a VXB file.

#include <algorithm>
#include <utility>
#include <vector>

#include "vxb/word_meaning.h"
#include "vxbtool/info/info.h"
#include "vxbtool/info/summary.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/image_depths.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

/// How many rows are shown of the coordinates, and of any other list.
constexpr std::size_t shownCoordinates = 20;
constexpr std::size_t shownRows = 12;

std::string soundness(const VxbFile& file) {
    const std::size_t errors = file.findings.count(Severity::error);
    const std::size_t warnings = file.findings.count(Severity::warning);
    if (errors == 0 && warnings == 0) {
        return "sound";
    }
    return counted(errors, "error") + ", " + counted(warnings, "warning");
}

/// "0-2, 5": the numbers of an ascending list, cut short.
std::string runsOf(const std::map<std::uint32_t, std::size_t>& byNumber) {
    constexpr std::size_t shownRuns = 8;
    std::string text;
    std::size_t runs = 0;
    for (auto i = byNumber.begin(); i != byNumber.end();) {
        const std::uint32_t first = i->first;
        std::uint32_t last = first;
        while (++i != byNumber.end() && i->first == last + 1) {
            ++last;
        }
        if (runs++ == shownRuns) {
            return text + ", ...";
        }
        text += (text.empty() ? "" : ", ") +
                (first == last ? fmt::format("{}", first) : fmt::format("{}-{}", first, last));
    }
    return text;
}

/// Writes a heading and the first rows of a list by `row(element)`; nothing for an empty list.
template <class List, class Row>
void writeList(TextOutput& output, std::string_view heading, const List& list, std::size_t shown,
               Row&& row) {
    if (list.empty()) {
        return;
    }
    output.format("\n{}\n", heading);
    std::size_t rows = 0;
    for (const auto& element : list) {
        if (rows++ == shown) {
            output.format("  ... and {} more\n", list.size() - shown);
            break;
        }
        row(element);
    }
}

using Form = std::pair<PrimitiveTypeCode, FormSummary>;

/// The forms by their polygons, the most first.
std::vector<Form> largestForms(const FileSummary& summary) {
    std::vector<Form> forms(summary.forms.begin(), summary.forms.end());
    std::stable_sort(forms.begin(), forms.end(), [](const Form& a, const Form& b) {
        return a.second.polygons > b.second.polygons;
    });
    return forms;
}

void writeSections(const VxbFile& file, const FileSummary& summary, TextOutput& output) {
    for (std::size_t i = 0; i < sectionNum; ++i) {
        const std::size_t words = summary.sectionWords[i];
        if (words > 0) {
            output.format(
                "  {:<20}{:>10} words{:>7.1f} %\n", sectionName(static_cast<Section>(i)), words,
                100.0 * static_cast<double>(words) / static_cast<double>(file.words.size()));
        }
    }
}

void writePoints(const VxbFile& file, const FileSummary& summary, TextOutput& output) {
    const auto numbers = [](const PointSection& points) {
        const std::uint32_t shared = points.shared.number;
        return fmt::format("{}{}", points.independent.number + shared,
                           shared > 0 ? fmt::format(" ({} shared)", shared) : "");
    };
    if (file.vertices.known) {
        output.format("\nVertices: {}, normals: {}\n", numbers(file.vertices),
                      numbers(file.normals));
    }
    if (summary.box) {
        const auto& [least, greatest] = *summary.box;
        output.format("  x {} to {}, y {} to {}, z {} to {}{}\n", least.x, greatest.x, least.y,
                      greatest.y, least.z, greatest.z,
                      file.coordinates.empty() ? "" : ", each in the space of its coordinate");
    }
}

std::string imageText(const Image& image, DepthSet depths) {
    const unsigned depth = onlyDepth(depths);
    const ImageBlock& pixels = image.pixels;
    std::string text = pixels.sized() && depth > 0
                           ? fmt::format("{} x {}", pixels.width * 16 / depth, pixels.height)
                           : fmt::format("{} words", pixels.words);
    text += fmt::format(", {}, at ({}, {})", depthText(depths), pixels.x, pixels.y);
    if (image.clut) {
        text += fmt::format(", lookup table at ({}, {})", image.clut->x, image.clut->y);
    }
    return text;
}

}  // namespace

void writeInfo(const std::string& name, const VxbFile& file, TextOutput& output) {
    const FileSummary summary = summarise(file);
    output.format("{}: {} words of four bytes, {}\n", printable(name), file.words.size(),
                  soundness(file));
    writeSections(file, summary, output);
    writeList(output, fmt::format("Coordinates: {}", file.coordinates.size()), summary.tree,
              shownCoordinates, [&](const TreeRow& row) {
                  const std::size_t polygons = summary.polygonsByCoordinate[row.coordinate];
                  output.format("  {:{}}{}{}\n", "", 2 * row.depth, row.coordinate,
                                polygons > 0 ? ": " + counted(polygons, "polygon") : "");
              });
    writeList(output, fmt::format("Polygons: {}", summary.polygons), largestForms(summary),
              shownRows, [&](const Form& entry) {
                  const auto& [code, form] = entry;
                  output.format("  {:08x}  {:<44}{:>9}", code, formName(code), form.polygons);
                  if (form.strips > 0) {
                      output.format(" in {}", counted(form.strips, "strip"));
                  }
                  if (!form.byCoordinate.empty()) {
                      output.format(", coordinate{} {}", form.byCoordinate.size() == 1 ? "" : "s",
                                    runsOf(form.byCoordinate));
                  }
                  output.put("\n");
              });
    writePoints(file, summary, output);
    const std::vector<DepthSet> depths = imageDepths(file);
    std::size_t number = 0;
    writeList(output, fmt::format("Images: {}", file.images.size()), file.images, shownRows,
              [&](const Image& image) {
                  output.format("  {}: {}\n", number, imageText(image, depths[number]));
                  ++number;
              });
    number = 0;
    writeList(output, fmt::format("Motions: {}", summary.motions.size()), summary.motions,
              shownRows, [&](const MotionSummary& motion) {
                  output.format(
                      "  {}: {}, {}, {}\n", number++, counted(motion.coordinates, "coordinate"),
                      counted(motion.steps, "step"), counted(motion.keyFrames, "key frame"));
              });
}

}  // namespace vxbtool
