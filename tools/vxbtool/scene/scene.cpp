#include "vxbtool/scene/scene.h"

#include <algorithm>

#include "vxbtool/scene/motions.h"
#include "vxbtool/scene/polygons.h"

namespace vxbtool::scene {

namespace {

void readCoordinates(const mqf2vxb::VxbFile& file, Scene& scene) {
    constexpr float matrixOne = 4096;
    for (const mqf2vxb::Coordinate& record : file.coordinates) {
        Coordinate& coordinate = scene.coordinates.emplace_back();
        for (std::size_t i = 0; i < coordinate.matrix.size(); ++i) {
            coordinate.matrix[i] = static_cast<float>(record.matrix[i]) / matrixOne;
        }
        for (std::size_t i = 0; i < coordinate.translation.size(); ++i) {
            coordinate.translation[i] = static_cast<float>(record.translation[i]);
        }
        std::copy(record.extra.begin(), record.extra.end(), coordinate.extra.begin());
        coordinate.parent = record.parent;
    }
}

}  // namespace

Scene makeScene(const mqf2vxb::VxbFile& file) {
    Scene scene;
    readCoordinates(file, scene);
    readPolygons(file, scene);
    scene.motions = readMotions(file, scene.warnings);
    return scene;
}

std::vector<Placement> placementsAtRest(const mqf2vxb::VxbFile& file) {
    Scene scene;
    readCoordinates(file, scene);
    return placements(scene);
}

}  // namespace vxbtool::scene
