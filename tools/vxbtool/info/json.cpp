// The JSON of "vxbtool info".

#include "vxb/word_meaning.h"
#include "vxbtool/info/info.h"
#include "vxbtool/info/summary.h"
#include "vxbtool/shared/vxb_json.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

void writeSections(const VxbFile& file, JsonOutput& output) {
    output.openArray("sections");
    for (const SectionExtent& extent : file.sections()) {
        output.value({{"section", sectionName(extent.section)},
                      {"offset", extent.offset},
                      {"words", extent.words}});
    }
    output.close();
}

void writeCoordinates(const VxbFile& file, const FileSummary& summary, JsonOutput& output) {
    output.openArray("coordinates");
    for (std::size_t i = 0; i < file.coordinates.size(); ++i) {
        output.value({{"parent", orNull(file.coordinates[i].parent)},
                      {"polygons", summary.polygonsByCoordinate[i]}});
    }
    output.close();
}

void writePolygons(const FileSummary& summary, JsonOutput& output) {
    output.openObject("polygons");
    output.member("number", summary.polygons);
    output.openArray("forms");
    for (const auto& [code, form] : summary.forms) {
        Json coordinates = Json::array();
        for (const auto& [coordinate, polygons] : form.byCoordinate) {
            coordinates.push_back({{"coordinate", coordinate}, {"polygons", polygons}});
        }
        output.value({{"code", code},
                      {"form", formName(code)},
                      {"polygons", form.polygons},
                      {"strips", form.strips},
                      {"words", form.words},
                      {"coordinates", std::move(coordinates)}});
    }
    output.close();
    output.close();
}

Json pointsOf(const PointSection& points) {
    return {{"independent", points.independent.number}, {"shared", points.shared.number}};
}

Json boxOf(const FileSummary& summary) {
    if (!summary.box) {
        return nullptr;
    }
    const auto& [least, greatest] = *summary.box;
    return {{"least", {least.x, least.y, least.z}},
            {"greatest", {greatest.x, greatest.y, greatest.z}}};
}

void writeImages(const VxbFile& file, JsonOutput& output) {
    output.openArray("images");
    const std::vector<DepthSet> depths = imageDepths(file);
    for (std::size_t i = 0; i < file.images.size(); ++i) {
        output.value(imageJson(file.images[i], depths[i]));
    }
    output.close();
}

}  // namespace

void writeInfo(const std::string& name, const VxbFile& file, JsonOutput& output) {
    const FileSummary summary = summarise(file);
    output.openObject();
    output.member("file", name);
    output.member("words", file.words.size());
    output.member("errors", file.findings.count(Severity::error));
    output.member("warnings", file.findings.count(Severity::warning));
    writeSections(file, output);
    writeCoordinates(file, summary, output);
    writePolygons(summary, output);
    output.member("vertices", pointsOf(file.vertices));
    output.member("normals", pointsOf(file.normals));
    output.member("box", boxOf(summary));
    writeImages(file, output);
    output.openArray("motions");
    for (const MotionSummary& motion : summary.motions) {
        output.value({{"coordinates", motion.coordinates},
                      {"steps", motion.steps},
                      {"keyFrames", motion.keyFrames}});
    }
    output.close();
    output.close();
}

}  // namespace vxbtool
