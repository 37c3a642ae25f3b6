#pragma once

#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// Reads the polygons of a file into a scene that has its coordinates: bodies, polygons, corners,
/// looks, pictures, and the places of the images.
void readPolygons(const mqf2vxb::VxbFile& file, Scene& scene);

}  // namespace vxbtool::scene
