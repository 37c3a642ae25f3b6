#include <algorithm>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "vxbtool/render/coverage.h"
#include "vxbtool/render/drawing.h"
#include "vxbtool/render/egl_context.h"
#include "vxbtool/render/picture.h"
#include "vxbtool/render/request.h"
#include "vxbtool/render/sheet.h"
#include "vxbtool/render/tile.h"
#include "vxbtool/render/triangles.h"

namespace vxbtool::render {
namespace {

using scene::Scene;

/// "it has no motion 3, its last one is 2"
void checkIndex(const char* what, const std::optional<std::uint32_t>& index, std::size_t number) {
    if (index && *index >= number) {
        throw RenderFault(number == 0 ? fmt::format("it has no {}s", what)
                                      : fmt::format("it has no {} {}, its last one is {}", what,
                                                    *index, number - 1));
    }
}

std::vector<scene::Placement> poseOf(const Scene& scene, const Request& request) {
    return request.motion ? scene::placements(scene, scene.motions[*request.motion], request.frame)
                          : scene::placements(scene);
}

/// The cameras of a sheet's views. They are equally far away, so that the model has the same size in
/// all of them.
std::vector<Camera> camerasOf(const Request& request, const std::vector<PixelArea>& views,
                              const Triangles& triangles) {
    std::vector<Camera> cameras;
    float distance = 0;
    for (std::size_t i = 0; i < views.size(); ++i) {
        Direction direction = request.direction;
        direction.turn += 360.0F * static_cast<float>(i) / static_cast<float>(views.size());
        Camera& camera = cameras.emplace_back(direction, views[i].width, views[i].height);
        camera.fit(triangles.focused);
        distance = std::max(distance, camera.distance());
    }
    for (Camera& camera : cameras) {
        camera.setDistance(distance);
        camera.setDepths(triangles.places);
    }
    return cameras;
}

/// Triangles that lie behind each other are drawn pixel by pixel, thousands of times over the picture
/// if they are so large; those of real models cover it some times.
void checkCoverage(const Request& request, const std::vector<PixelArea>& views,
                   const std::vector<Camera>& cameras, const Triangles& triangles) {
    const double most = mostCovered + mostCoveredPerPixel * request.width * request.height;
    double covered = 0;
    for (std::size_t i = 0; i < views.size() && covered <= most; ++i) {
        covered += coveredPixels(cameras[i], views[i], triangles.vertices);
    }
    if (covered > most) {
        throw RenderFault(fmt::format("its polygons cover more than {:.0f} pixels, most of them "
                                      "behind others; a smaller --size needs fewer",
                                      most));
    }
}

std::array<float, 4> backgroundOf(const Request& request) {
    if (!request.background) {
        return {0, 0, 0, 0};
    }
    const auto [red, green, blue] = *request.background;
    constexpr float most = 255;
    return {static_cast<float>(red) / most, static_cast<float>(green) / most,
            static_cast<float>(blue) / most, 1};
}

/// A picture that is background everywhere.
Picture emptyPicture(const Request& request) {
    Picture picture{request.width, request.height, {}};
    picture.bytes.resize(std::size_t{request.width} * request.height * Picture::channels);
    if (request.background) {
        for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
            const std::size_t channel = i % Picture::channels;
            picture.bytes[i] = channel < 3 ? (*request.background)[channel] : 255;
        }
    }
    return picture;
}

/// Calls `use(tile)` for every part of an area that a tile holds, seen from the area.
template <class Use>
void forEachTile(const PixelArea& area, Use use) {
    for (std::uint32_t y = 0; y < area.height; y += Tile::size) {
        for (std::uint32_t x = 0; x < area.width; x += Tile::size) {
            use(PixelArea{x, y, std::min(Tile::size, area.width - x),
                          std::min(Tile::size, area.height - y)});
        }
    }
}

}  // namespace

std::string drawPng(const Scene& scene, const Request& request) {
    checkIndex("motion", request.motion, scene.motions.size());
    checkIndex("coordinate", request.focus, scene.coordinates.size());
    const std::vector<PixelArea> views = sheetOf(request.width, request.height, request.views);
    if (views.empty()) {
        throw RenderFault(fmt::format("{} views do not fit into {} x {} pixels", request.views,
                                      request.width, request.height));
    }
    const Triangles triangles = makeTriangles(scene, poseOf(scene, request), request.focus);
    if (triangles.focused.empty()) {
        throw RenderFault(
            request.focus
                ? fmt::format("nothing is drawn at coordinate {} and below it", *request.focus)
                : "it has no polygons to draw");
    }
    const std::vector<Camera> cameras = camerasOf(request, views, triangles);
    checkCoverage(request, views, cameras, triangles);

    const EglContext context;
    const Tile tile(context.gl());
    const Drawing drawing(context.gl(), scene, triangles, request.twoSides);
    Picture picture = emptyPicture(request);
    for (std::size_t i = 0; i < views.size(); ++i) {
        forEachTile(views[i], [&](const PixelArea& part) {
            tile.begin(part, backgroundOf(request));
            drawing.draw(cameras[i], part);
            tile.end(part, views[i].x + part.x, views[i].y + part.y, picture);
        });
    }
    return pngFileOf(picture);
}

}  // namespace vxbtool::render
