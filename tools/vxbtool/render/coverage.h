#pragma once

#include <span>

#include "vxbtool/render/camera.h"
#include "vxbtool/render/triangles.h"

namespace vxbtool::render {

/// How many pixels of a view triangles cover, each by itself: what lies behind others counts too.
double coveredPixels(const Camera& camera, const PixelArea& view, std::span<const Vertex> vertices);

}  // namespace vxbtool::render
