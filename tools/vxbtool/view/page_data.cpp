#include "vxbtool/view/page_data.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "format/texture_fields.h"
#include "vxbtool/check/check.h"
#include "vxbtool/scene/image_pictures.h"
#include "vxbtool/shared/base64.h"
#include "vxbtool/shared/image_depths.h"
#include "vxbtool/shared/png.h"

namespace vxbtool::view {
namespace {

using mqf2vxb::VxbFile;
using scene::Scene;

/// Adds the polygons that each coordinate draws, and those that none does.
void addPolygons(const Scene& scene, Json& data) {
    std::vector<std::uint32_t> polygons(scene.coordinates.size());
    std::uint32_t shared = 0;
    std::uint32_t unowned = 0;
    for (const scene::Body& body : scene.bodies) {
        for (const std::uint32_t coordinate : body.coordinates) {
            polygons[coordinate] += body.polygonNum;
        }
        if (body.shared) {
            shared += body.polygonNum;
        } else if (body.coordinates.empty()) {
            unowned += body.polygonNum;
        }
    }
    data["coordinates"] = Json::array();
    for (std::size_t i = 0; i < polygons.size(); ++i) {
        const std::optional<std::uint32_t> parent = scene.coordinates[i].parent;
        data["coordinates"].push_back(
            {{"parent", parent ? Json(*parent) : Json(nullptr)}, {"polygons", polygons[i]}});
    }
    data["sharedPolygons"] = shared;
    data["unownedPolygons"] = unowned;
}

Json counts(const VxbFile& file, const Scene& scene) {
    const auto points = [](const mqf2vxb::PointSection& section) {
        return section.independent.number + section.shared.number;
    };
    return {{"bytes", file.words.size() * sizeof(std::uint32_t)},
            {"coordinates", file.coordinates.size()},
            {"polygons", scene.polygons.size()},
            {"packet groups", file.packetGroups.size()},
            {"vertices", points(file.vertices)},
            {"normals", points(file.normals)},
            {"images", file.images.size()},
            {"pictures of polygons", scene.pictures.size()},
            {"motions", file.animation.motions.size()}};
}

Json motions(const Scene& scene) {
    Json result = Json::array();
    for (const scene::Motion& motion : scene.motions) {
        Json tracks = Json::array();
        for (const scene::Track& track : motion.tracks) {
            tracks.push_back({{"coordinate", track.coordinate},
                              {"frames", track.frames},
                              {"loops", track.loops}});
        }
        result.push_back({{"frames", motion.frames}, {"tracks", std::move(tracks)}});
    }
    return result;
}

Json findings(const VxbFile& file, const std::string& name) {
    Json result = Json::array();
    for (const ReportedFinding& finding : reportOn(file, name, {}).findings) {
        const bool error = finding.severity == mqf2vxb::Severity::error;
        result.push_back({{"code", finding.code},
                          {"severity", error ? "error" : "warning"},
                          {"text", finding.text},
                          {"place", finding.place},
                          {"occurrences", finding.occurrences}});
    }
    return result;
}

/// Adds the picture of image memory, and the places of its images.
void addMemory(const VxbFile& file, const Scene& scene, Json& data) {
    const scene::MemoryPicture picture = scene::memoryPicture(file, scene);
    const auto* const first = reinterpret_cast<const std::uint8_t*>(picture.pixels.data());
    data["memory"] = nullptr;
    if (!picture.pixels.empty()) {
        const std::string png = pngOf(picture.width, picture.height,
                                      {first, sizeof(scene::Rgba) * picture.pixels.size()});
        data["memory"] = {{"width", picture.width / scene::pixelsPerColumn},
                          {"height", picture.height},
                          {"png", base64(png)}};
    }
    const std::vector<DepthSet> depths = imageDepths(file);
    data["places"] = Json::array();
    for (const scene::ImagePlace& place : scene.imagePlaces) {
        data["places"].push_back({{"image", place.image},
                                  {"x", place.x},
                                  {"y", place.y},
                                  {"width", place.width},
                                  {"height", place.height},
                                  {"clut", place.clut},
                                  {"depth", place.clut ? "" : depthText(depths[place.image])}});
    }
}

Json pictures(const Scene& scene) {
    constexpr double columnBits = 16;
    Json result = Json::array();
    for (const scene::Picture& picture : scene.pictures) {
        const mqf2vxb::TexturePage page = mqf2vxb::texturePage(picture.page);
        Json clut = nullptr;
        if (picture.clut) {
            const mqf2vxb::ClutPosition place = mqf2vxb::clutPosition(*picture.clut);
            clut = {{"x", place.x}, {"y", place.y}};
        }
        result.push_back({{"x", page.x + picture.x * picture.depth / columnBits},
                          {"y", page.y + picture.y},
                          {"width", picture.width},
                          {"height", picture.height},
                          {"depth", picture.depth},
                          {"clut", std::move(clut)}});
    }
    return result;
}

}  // namespace

Json pageData(const VxbFile& file, const Scene& scene, const std::string& name,
              double framesPerSecond) {
    Json data{
        {"name", name}, {"counts", counts(file, scene)}, {"framesPerSecond", framesPerSecond}};
    addPolygons(scene, data);
    data["motions"] = motions(scene);
    data["findings"] = findings(file, name);
    data["warnings"] = scene.warnings;
    addMemory(file, scene, data);
    data["pictures"] = pictures(scene);
    return data;
}

}  // namespace vxbtool::view
