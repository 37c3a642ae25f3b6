#include "vxbtool/import/report.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include <fmt/core.h>

#include "vxbtool/shared/json_output.h"
#include "vxbtool/shared/printable.h"

namespace vxbtool::importing {
namespace {

/// Something that the model has not, or not as the source has it.
struct Loss {
    std::string what;
    std::string reason;
    std::size_t count = 0;
};

std::vector<Loss> lossesOf(const ImportReport& report) {
    const Dropped& dropped = report.dropped;
    std::vector<Loss> losses{
        {"lines and points", "only polygons are drawn", dropped.lines},
        {"polygons", "without an area in whole units", dropped.areaLess},
        {"polygons", "a corner is no finite number", dropped.notFinite},
        {"polygons cut like fans", "their outlines are too intricate, or cross themselves",
         dropped.fans},
        {"triangles", "taken away by --triangles", dropped.simplified},
        {"polygons cut", "more than four corners, or bent", dropped.cutPolygons},
        {"polygons cut", "along the edges of a texture that repeats", dropped.seamPolygons},
        {"polygons cut", "along the edges of a texture that ends there", dropped.clampedPolygons},
        {"polygons without texture", "it repeats too often: its mean colour instead",
         dropped.tooFine},
        {"morph targets", "the files have none", dropped.morphTargets},
        {"cameras", "the files have none", dropped.cameras},
        {"lights", "the files have none", dropped.lights},
        {"sets of texture coordinates", "no colour texture uses them", dropped.textureSets},
        {"sets of vertex colours", "beyond the first", dropped.colourSets}};
    std::erase_if(losses, [](const Loss& loss) { return loss.count == 0; });
    for (const MissingTexture& texture : report.textures.missing) {
        losses.push_back({fmt::format("texture {}", texture.name), texture.cause, 1});
    }
    for (const LostMotion& lost : report.motions.lost) {
        losses.push_back({lost.what, lost.reason, lost.count});
    }
    return losses;
}

double largestAngleError(const ImportReport& report) {
    double largest = 0;
    for (const MotionSummary& motion : report.motions.summaries) {
        largest = std::max(largest, motion.angleError);
    }
    return largest;
}

class Table {
public:
    void row(std::string_view what, const std::string& text) {
        text_ += fmt::format("  {:<14}{}\n", what, printable(text));
    }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

}  // namespace

std::string humanReport(const WrittenFiles& written, const ImportReport& report) {
    const SurfaceCounts& surface = report.surface;
    Table table;
    table.row("scale", fmt::format("{:.10g} units for one of the source{}", report.scale,
                                   report.fitted ? ", the largest that fits" : ""));
    table.row("coordinates",
              fmt::format("{}, of which {} joints", report.coordinates, report.joints));
    table.row("polygons", fmt::format("{} triangles, {} quadrangles, of which {} over joints",
                                      surface.triangles, surface.quadrangles, surface.shared));
    if (surface.meshes > 0) {
        table.row("meshes", fmt::format("{}", surface.meshes));
    }
    table.row("vertices", fmt::format("{}, and {} normals; none is more than {:.2f} units off",
                                      surface.vertices, surface.normals, surface.positionError));
    const auto& textures = report.textures.placing.textures;
    for (std::size_t t = 0; t < textures.size(); ++t) {
        table.row("texture",
                  fmt::format("{}: {}{}", report.textures.names[t], pictures::describe(textures[t]),
                              textures[t].halvings > 0 ? "; halved: memory is full" : ""));
    }
    for (const MotionSummary& motion : report.motions.summaries) {
        table.row(
            "motion",
            fmt::format("{}: {} frames, {} coordinates, {} steps, {} key frames; at most {:.2f} "
                        "units and {:.2f} degrees off",
                        motion.name, motion.frames, motion.coordinates, motion.steps,
                        motion.keyFrames, motion.positionError, motion.angleError));
    }
    for (const Loss& loss : lossesOf(report)) {
        table.row("not as it was", fmt::format("{} {}: {}", loss.count, loss.what, loss.reason));
    }
    return fmt::format("{} became {}\n{}", printable(written.source), printable(written.model),
                       table.text());
}

void writeJsonReport(const WrittenFiles& written, const ImportReport& report, TextOutput& output) {
    const SurfaceCounts& surface = report.surface;
    // Beyond four decimals there is only what floats are off.
    const auto number = [](double value) {
        constexpr double parts = 10000;
        return std::isfinite(value) ? Json(std::round(value * parts) / parts) : Json();
    };
    JsonOutput json(output);
    json.openObject();
    json.member("format", "vxbtool-import");
    json.member("version", 1);
    json.member("source", written.source);
    json.member("sourceFormat", report.format);
    json.member("model", written.model);
    json.member("files", written.files);
    json.member("scale", report.scale);
    json.member("fitted", report.fitted);
    json.member("coordinates", report.coordinates);
    json.member("joints", report.joints);
    json.member("triangles", surface.triangles);
    json.member("quadrangles", surface.quadrangles);
    json.member("sharedPolygons", surface.shared);
    json.member("meshes", surface.meshes);
    json.member("vertices", surface.vertices);
    json.member("normals", surface.normals);
    json.member("positionError", number(surface.positionError));
    json.member("angleError", number(largestAngleError(report)));
    json.openArray("textures");
    const auto& textures = report.textures.placing.textures;
    for (std::size_t t = 0; t < textures.size(); ++t) {
        const pictures::PlacedTexture& texture = textures[t];
        Json entry;
        entry["name"] = report.textures.names[t];
        entry["width"] = texture.width;
        entry["height"] = texture.height;
        entry["bits"] = texture.depth;
        entry["colours"] = texture.colours;
        entry["psnr"] = number(texture.psnr);
        entry["halvings"] = texture.halvings;
        entry["repeats"] = texture.repeats;
        entry["x"] = texture.texture.pixels.x;
        entry["y"] = texture.texture.pixels.y;
        json.value(entry);
    }
    json.close();
    json.openArray("motions");
    for (const MotionSummary& motion : report.motions.summaries) {
        Json entry;
        entry["name"] = motion.name;
        entry["frames"] = motion.frames;
        entry["coordinates"] = motion.coordinates;
        entry["steps"] = motion.steps;
        entry["keyFrames"] = motion.keyFrames;
        entry["positionError"] = number(motion.positionError);
        entry["angleError"] = number(motion.angleError);
        entry["scaleError"] = number(motion.scaleError);
        json.value(entry);
    }
    json.close();
    json.openArray("losses");
    for (const Loss& loss : lossesOf(report)) {
        Json entry;
        entry["what"] = loss.what;
        entry["reason"] = loss.reason;
        entry["count"] = loss.count;
        json.value(entry);
    }
    json.close();
    json.close();
    output.finish();
}

}  // namespace vxbtool::importing
