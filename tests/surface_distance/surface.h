#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <assimp/scene.h>

/// The surface of a scene, to be measured against another's.
namespace surface_distance {

using Vector = aiVector3t<double>;
using Triangle = std::array<Vector, 3>;

struct Surface {
    /// What the surface may be made of: of polygons that are not flat, the triangles of every way to
    /// cut them.
    std::vector<Triangle> triangles;
    /// What it is made of for sure: triangles, and of polygons that are not flat their edges, as
    /// triangles of no area.
    std::vector<Triangle> certain;
    /// How much the scene's nodes enlarge their meshes, at most along an axis.
    double largestScale = 0;
};

/// A scene as it rests, every length times `scale`.
Surface surfaceOf(const aiScene& scene, double scale);

/// Finds how far points are from triangles.
class Distances {
public:
    explicit Distances(const std::vector<Triangle>& triangles);

    /// To the nearest triangle.
    [[nodiscard]] double from(const Vector& point) const;

private:
    struct Box {
        Vector low;
        Vector high;
        std::uint32_t first = 0;  // of the triangles, or of the two boxes inside
        std::uint32_t count = 0;  // of the triangles; 0 for boxes
    };

    void build(std::uint32_t box, std::uint32_t first, std::uint32_t end);

    std::vector<Triangle> triangles_;
    std::vector<Box> boxes_;
};

/// So many points on the triangles, by their area (by their length where they have none), the same ones
/// every time.
std::vector<Vector> pointsOn(const std::vector<Triangle>& triangles, std::size_t number);

}  // namespace surface_distance
