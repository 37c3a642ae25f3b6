#include "vxbtool/import/import_model.h"

#include <cmath>
#include <filesystem>
#include <string>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/looks.h"
#include "vxbtool/import/materials.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/import/seams.h"
#include "vxbtool/import/texture_coordinates.h"

namespace vxbtool::importing {
namespace {

/// The farthest that a vertex may lie from its coordinate's origin along an axis.
constexpr double mostUnits = 32767;

/// The number with four digits that is not larger.
double roundedDown(double value) {
    const double step = std::pow(10.0, std::floor(std::log10(value)) - 3);
    // The double that those digits name.
    return std::stod(fmt::format("{:.4g}", std::floor(value / step) * step));
}

struct PlacedShape {
    double scale = 0;
    PlacedCoordinates placed;
    Shape shape;
    Dropped dropped;
};

PlacedShape shapeAt(double scale, const aiScene& scene, const CoordinateMap& map,
                    const Materials& materials, const ImportOptions& options) {
    PlacedShape result;
    result.scale = scale;
    result.placed = placeCoordinates(map, scale);
    result.shape = makeShape(scene, map, result.placed, materials, options.shape, result.dropped);
    return result;
}

/// The shape at the scale that the options ask for, or at the largest that fits.
PlacedShape fittingShape(const aiScene& scene, const CoordinateMap& map, const Materials& materials,
                         const ImportOptions& options) {
    PlacedShape result = shapeAt(options.scale, scene, map, materials, options);
    // What rounded coordinates shift is made good in vertices, so that a scale may just fail to fit.
    constexpr int attempts = 4;
    for (int attempt = 0;; ++attempt) {
        const Farthest spot = farthest(result.shape);
        if (spot.distance <= mostUnits) {
            return result;
        }
        const std::string node = map.coordinates[spot.coordinate].node->mName.C_Str();
        const double largest = result.scale * mostUnits / spot.distance;
        if (!std::isfinite(spot.distance) || !(largest > 0) || attempt == attempts) {
            throw ImportFault(fmt::format("no scale fits node \"{}\"", node));
        }
        if (!options.fit) {
            throw ImportFault(fmt::format(
                "node \"{}\" reaches {:.6g} units from its origin at a scale of {:.6g}, and vertices "
                "hold {}: the largest scale that fits is {:.6g} (--scale {:.6g} or --fit)",
                node, spot.distance, result.scale, mostUnits, roundedDown(largest),
                roundedDown(largest)));
        }
        result = shapeAt(roundedDown(largest), scene, map, materials, options);
    }
}

}  // namespace

ImportedModel importModel(const Source& source, const std::string& file,
                          const ImportOptions& options,
                          const std::function<void(const char*)>& step) {
    const aiScene& scene = source.scene();
    ImportedModel result;
    ImportReport& report = result.report;
    step("polygons");
    const Materials materials = readMaterials(scene, options.unlit);
    const CoordinateMap map = mapCoordinates(scene, options.motions, options.up);
    PlacedShape surface = fittingShape(scene, map, materials, options);
    cutAtClampedEdges(materials, surface.placed, surface.shape, surface.dropped);
    settleTextureCoordinates(materials, surface.shape);
    step("textures");
    report.textures = placeTextures(scene, file, materials, surface.shape, options.textures);
    cutAtSeams(report.textures, surface.placed, surface.shape, surface.dropped);
    step("merging");
    LookMaker looks(materials, report.textures, surface.shape);
    report.surface = buildSurface(scene, map, surface.placed, surface.shape, looks, options.strips,
                                  surface.dropped, result.text);
    if (result.text.geometry->polygons.empty()) {
        throw ImportFault(surface.dropped.areaLess > 0
                              ? "none of its polygons has an area at this scale"
                              : "it holds no polygons that can be drawn");
    }
    for (const pictures::PlacedTexture& texture : report.textures.placing.textures) {
        result.text.textures.push_back(texture.texture);
    }
    if (options.motions) {
        step("motions");
        report.motions = makeMotions(scene, map, surface.placed, surface.scale, options.fps);
        result.text.motions = std::move(report.motions.motions);
    }
    report.format = formatOf(scene);
    report.scale = surface.scale;
    report.fitted = surface.scale != options.scale;
    report.coordinates = map.coordinates.size();
    for (const SourceCoordinate& coordinate : map.coordinates) {
        report.joints += coordinate.joint ? 1 : 0;
    }
    report.dropped = surface.dropped;
    result.text.heading =
        fmt::format("Imported from {}, {:.10g} units for one of its own.",
                    std::filesystem::path(file).filename().string(), surface.scale);
    return result;
}

}  // namespace vxbtool::importing
