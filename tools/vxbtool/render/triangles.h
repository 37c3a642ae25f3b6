#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "vxbtool/scene/scene.h"

namespace vxbtool::render {

using scene::Vector3;

/// A corner as the driver gets it, in the model's space.
struct Vertex {
    Vector3 place{};
    Vector3 normal{};
    std::array<std::uint8_t, 4> colour{};
    std::array<float, 2> texel{};
};

/// Vertices that follow each other, three for each triangle, and are drawn alike.
struct Run {
    std::uint32_t look = 0;  ///< index into Scene::looks
    std::uint32_t firstVertex = 0;
    std::uint32_t vertexNum = 0;
};

/// A polygon that is not opaque. Such polygons are drawn one by one, the farthest first.
struct SeeThrough {
    Run run;
    Vector3 middle{};
};

/// A scene in one pose, as triangles.
struct Triangles {
    std::vector<Vertex> vertices;
    std::vector<Run> opaque;  ///< one for each look that has any
    std::vector<SeeThrough> seeThrough;
    std::vector<Vector3> places;   ///< of all corners
    std::vector<Vector3> focused;  ///< of those that the picture is to show
};

/// The most triangles of a picture. A few words of a file may name the same polygons for thousands of
/// coordinates.
inline constexpr std::uint64_t mostTriangles = std::uint64_t{1} << 22U;

/// Puts every polygon where each of its coordinates stands. With a `focus` the picture is to show that
/// coordinate and those below it. Throws a RenderFault when there are too many triangles. Polygons
/// whose places no number tells are left out.
Triangles makeTriangles(const scene::Scene& scene, const std::vector<scene::Placement>& placements,
                        std::optional<std::uint32_t> focus);

}  // namespace vxbtool::render
