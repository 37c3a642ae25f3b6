#include "vxbtool/import/smoothing.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <tuple>

namespace vxbtool::importing {
namespace {

/// Faces beyond these at one spot are all taken together: comparing each with each takes too long.
constexpr std::size_t mostAtSpot = 256;

struct SpotCorner {
    aiVector3D spot;
    std::size_t corner;  ///< four for each face

    [[nodiscard]] auto key() const { return std::tuple(spot.x, spot.y, spot.z); }
};

/// The corners of the faces, those at one spot together.
std::vector<SpotCorner> cornersBySpot(const aiMesh& mesh, const std::vector<Face>& faces) {
    std::vector<SpotCorner> corners;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        for (std::size_t k = 0; k < faces[f].cornerNum; ++k) {
            corners.push_back({mesh.mVertices[faces[f].vertices[k]], f * 4 + k});
        }
    }
    std::ranges::sort(corners, [](const SpotCorner& a, const SpotCorner& b) {
        return std::tuple_cat(a.key(), std::tuple(a.corner)) <
               std::tuple_cat(b.key(), std::tuple(b.corner));
    });
    return corners;
}

/// The normals of the corners at one spot. `least` is the cosine of the angle up to which faces belong
/// together.
void smoothSpot(std::span<const SpotCorner> corners, const std::vector<Vector>& fronts,
                double least, std::vector<Vector>& normals) {
    const auto frontOfCorner = [&](const SpotCorner& corner) -> const Vector& {
        return fronts[corner.corner / 4];
    };
    const bool all = corners.size() > mostAtSpot;
    Vector sum;
    for (const SpotCorner& corner : corners) {
        sum += frontOfCorner(corner);
    }
    for (const SpotCorner& corner : corners) {
        const Vector& own = frontOfCorner(corner);
        Vector near = all ? sum : Vector();
        for (const SpotCorner& other : all ? std::span<const SpotCorner>() : corners) {
            const Vector& front = frontOfCorner(other);
            if (own * front >= least * own.Length() * front.Length()) {
                near += front;
            }
        }
        normals[corner.corner] = near.SquareLength() > 0 ? near : own;
    }
}

}  // namespace

std::vector<Vector> smoothNormals(const aiMesh& mesh, const std::vector<Face>& faces,
                                  double degrees) {
    std::vector<Vector> fronts;
    fronts.reserve(faces.size());
    for (const Face& face : faces) {
        std::array<Vector, 4> ring;
        for (std::size_t k = 0; k < face.cornerNum; ++k) {
            ring[k] = vectorOf(mesh.mVertices[face.vertices[k]]);
        }
        fronts.push_back(frontOf(std::span(ring).first(face.cornerNum)));
    }
    constexpr double halfTurn = 180;
    const double least = std::cos(degrees * std::numbers::pi / halfTurn) - 1e-6;
    std::vector<Vector> normals(faces.size() * 4);
    const std::vector<SpotCorner> corners = cornersBySpot(mesh, faces);
    for (std::size_t first = 0; first < corners.size();) {
        std::size_t end = first + 1;
        while (end < corners.size() && corners[end].key() == corners[first].key()) {
            ++end;
        }
        smoothSpot(std::span(corners).subspan(first, end - first), fronts, least, normals);
        first = end;
    }
    return normals;
}

}  // namespace vxbtool::importing
