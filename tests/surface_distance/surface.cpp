#include "surface.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace surface_distance {
namespace {

using Matrix = aiMatrix4x4t<double>;

Vector placed(const Matrix& matrix, const aiVector3D& v) {
    return matrix * Vector(double{v.x}, double{v.y}, double{v.z});
}

/// The largest of the lengths that the matrix gives to the axes.
double scaleOf(const Matrix& m) {
    return std::max({Vector(m.a1, m.b1, m.c1).Length(), Vector(m.a2, m.b2, m.c2).Length(),
                     Vector(m.a3, m.b3, m.c3).Length()});
}

bool isFinite(const Vector& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

double twiceArea(const Triangle& t) { return ((t[1] - t[0]) ^ (t[2] - t[0])).Length(); }

/// How far the polygon's corners are from the plane that fits them.
double bend(const std::vector<Vector>& corners) {
    Vector normal;
    Vector middle;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        normal += (corners[i] - corners[0]) ^ (corners[(i + 1) % corners.size()] - corners[0]);
        middle += corners[i] / static_cast<double>(corners.size());
    }
    normal.NormalizeSafe();
    double farthest = 0;
    for (const Vector& corner : corners) {
        farthest = std::max(farthest, std::abs((corner - middle) * normal));
    }
    return farthest;
}

/// Whether every corner turns the same way, so that each fan covers the polygon and nothing else.
bool isConvex(const std::vector<Vector>& corners) {
    const std::size_t count = corners.size();
    Vector whole;
    for (std::size_t i = 0; i < count; ++i) {
        whole += (corners[i] - corners[0]) ^ (corners[(i + 1) % count] - corners[0]);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const Vector turn = (corners[(i + 1) % count] - corners[i]) ^
                            (corners[(i + 2) % count] - corners[(i + 1) % count]);
        if (turn * whole < 0) {
            return false;
        }
    }
    return true;
}

void addPolygon(const std::vector<Vector>& corners, Surface& surface) {
    constexpr double flat = 0.25;
    const std::size_t count = corners.size();
    const auto fan = [&](std::size_t from, std::vector<Triangle>& triangles) {
        for (std::size_t i = 1; i + 1 < count; ++i) {
            triangles.push_back(
                {corners[from], corners[(from + i) % count], corners[(from + i + 1) % count]});
        }
    };
    if (count == 3 || (bend(corners) < flat && isConvex(corners))) {
        fan(0, surface.triangles);
        fan(0, surface.certain);
        return;
    }
    // Of a few corners any three may be a triangle of some way, of many those of the fans are.
    constexpr std::size_t few = 12;
    for (std::size_t from = 0; from < count; ++from) {
        surface.certain.push_back({corners[from], corners[(from + 1) % count], corners[from]});
        for (std::size_t i = from + 1; count <= few && i < count; ++i) {
            for (std::size_t k = i + 1; k < count; ++k) {
                surface.triangles.push_back({corners[from], corners[i], corners[k]});
            }
        }
        if (count > few) {
            fan(from, surface.triangles);
        }
    }
}

}  // namespace

Surface surfaceOf(const aiScene& scene, double scale) {
    Surface surface;
    Matrix units;
    Matrix::Scaling({scale, scale, scale}, units);
    std::vector<std::pair<const aiNode*, Matrix>> open{{scene.mRootNode, units}};
    while (!open.empty()) {
        const auto [node, parent] = open.back();
        open.pop_back();
        const Matrix matrix = parent * Matrix(node->mTransformation);
        for (unsigned c = 0; c < node->mNumChildren; ++c) {
            if (node->mChildren[c] != nullptr) {
                open.emplace_back(node->mChildren[c], matrix);
            }
        }
        for (unsigned m = 0; m < node->mNumMeshes; ++m) {
            const aiMesh& mesh = *scene.mMeshes[node->mMeshes[m]];
            surface.largestScale = std::max(surface.largestScale, scaleOf(matrix));
            for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
                const aiFace& face = mesh.mFaces[f];
                std::vector<Vector> corners;
                for (unsigned i = 0; i < face.mNumIndices; ++i) {
                    corners.push_back(placed(matrix, mesh.mVertices[face.mIndices[i]]));
                }
                if (corners.size() >= 3 && std::all_of(corners.begin(), corners.end(), isFinite)) {
                    addPolygon(corners, surface);
                }
            }
        }
    }
    return surface;
}

namespace {

double& component(Vector& v, int axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

Vector middleOf(const Triangle& t) { return t[0] + t[1] + t[2]; }

double distanceToBox(const Vector& p, const Vector& low, const Vector& high) {
    const auto outside = [](double at, double from, double to) {
        return std::max({from - at, 0.0, at - to});
    };
    return Vector(outside(p.x, low.x, high.x), outside(p.y, low.y, high.y),
                  outside(p.z, low.z, high.z))
        .SquareLength();
}

double squareToSegment(const Vector& p, const Vector& a, const Vector& b) {
    const Vector along = b - a;
    const double length = along.SquareLength();
    const double part = length > 0 ? std::clamp(((p - a) * along) / length, 0.0, 1.0) : 0.0;
    return (p - (a + along * part)).SquareLength();
}

double squareToTriangle(const Vector& p, const Triangle& t) {
    const Vector normal = (t[1] - t[0]) ^ (t[2] - t[0]);
    const double size = normal.SquareLength();
    double nearest = std::numeric_limits<double>::infinity();
    bool inside = size > 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector& a = t[i];
        const Vector& b = t[(i + 1) % 3];
        inside = inside && ((b - a) ^ (p - a)) * normal >= 0;
        nearest = std::min(nearest, squareToSegment(p, a, b));
    }
    if (inside) {
        const double height = (p - t[0]) * normal;
        nearest = std::min(nearest, height * height / size);
    }
    return nearest;
}

}  // namespace

Distances::Distances(const std::vector<Triangle>& triangles) : triangles_(triangles) {
    boxes_.emplace_back();
    build(0, 0, static_cast<std::uint32_t>(triangles_.size()));
}

void Distances::build(std::uint32_t box, std::uint32_t first, std::uint32_t end) {
    constexpr double most = std::numeric_limits<double>::infinity();
    Vector low(most, most, most);
    Vector high(-most, -most, -most);
    for (std::uint32_t i = first; i < end; ++i) {
        for (Vector& corner : triangles_[i]) {
            for (int axis = 0; axis < 3; ++axis) {
                component(low, axis) = std::min(component(low, axis), component(corner, axis));
                component(high, axis) = std::max(component(high, axis), component(corner, axis));
            }
        }
    }
    constexpr std::uint32_t few = 4;
    if (end - first <= few) {
        boxes_[box] = {low, high, first, end - first};
        return;
    }
    const Vector size = high - low;
    const int axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    const std::uint32_t middle = first + (end - first) / 2;
    std::nth_element(triangles_.begin() + first, triangles_.begin() + middle,
                     triangles_.begin() + end, [axis](const Triangle& a, const Triangle& b) {
                         Vector left = middleOf(a);
                         Vector right = middleOf(b);
                         return component(left, axis) < component(right, axis);
                     });
    const auto inner = static_cast<std::uint32_t>(boxes_.size());
    boxes_[box] = {low, high, inner, 0};
    boxes_.resize(boxes_.size() + 2);
    build(inner, first, middle);
    build(inner + 1, middle, end);
}

double Distances::from(const Vector& point) const {
    double nearest = std::numeric_limits<double>::infinity();
    std::vector<std::uint32_t> open{0};
    while (!open.empty()) {
        const Box& box = boxes_[open.back()];
        open.pop_back();
        if (distanceToBox(point, box.low, box.high) >= nearest) {
            continue;
        }
        for (std::uint32_t i = 0; i < box.count; ++i) {
            nearest = std::min(nearest, squareToTriangle(point, triangles_[box.first + i]));
        }
        if (box.count == 0 && !triangles_.empty()) {
            std::array<std::uint32_t, 2> inner{box.first, box.first + 1};
            const auto distance = [&](std::uint32_t b) {
                return distanceToBox(point, boxes_[b].low, boxes_[b].high);
            };
            if (distance(inner[0]) < distance(inner[1])) {
                std::swap(inner[0], inner[1]);
            }
            open.insert(open.end(), inner.begin(), inner.end());
        }
    }
    return std::sqrt(nearest);
}

std::vector<Vector> pointsOn(const std::vector<Triangle>& triangles, std::size_t number) {
    // Lines count by their length: the same share of points shows on both.
    std::vector<double> ends;
    double whole = 0;
    for (const Triangle& t : triangles) {
        const bool line = t[2] == t[0];
        whole += line ? (t[1] - t[0]).Length() : twiceArea(t) / 2;
        ends.push_back(whole);
    }
    std::vector<Vector> points;
    if (!(whole > 0)) {
        return points;
    }
    std::mt19937_64 random(20'240'101);
    const auto part = [&] { return static_cast<double>(random() >> 11U) * 0x1p-53; };
    for (std::size_t i = 0; i < number; ++i) {
        const double at = (static_cast<double>(i) + part()) / static_cast<double>(number) * whole;
        const auto found = std::upper_bound(ends.begin(), ends.end() - 1, at);
        const Triangle& t = triangles[static_cast<std::size_t>(found - ends.begin())];
        double u = part();
        double v = part();
        if (u + v > 1) {
            u = 1 - u;
            v = 1 - v;
        }
        points.push_back(t[0] + (t[1] - t[0]) * u + (t[2] - t[0]) * v);
    }
    return points;
}

}  // namespace surface_distance
