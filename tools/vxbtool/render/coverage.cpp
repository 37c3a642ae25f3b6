#include "vxbtool/render/coverage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace vxbtool::render {
namespace {

struct ClipPoint {
    float x;
    float y;
    float z;
    float w;
};

/// The left, right, lower and upper side of the picture, and the plane nearest to the viewer.
constexpr std::size_t planeNum = 5;

/// Not negative where the plane leaves a point.
float distance(std::size_t plane, const ClipPoint& point) {
    switch (plane) {
    case 0: return point.w + point.x;
    case 1: return point.w - point.x;
    case 2: return point.w + point.y;
    case 3: return point.w - point.y;
    default: return point.w + point.z;
    }
}

/// A triangle, and what the planes leave of it.
class ClippedTriangle {
public:
    explicit ClippedTriangle(const std::array<ClipPoint, 3>& corners) : number_(corners.size()) {
        std::ranges::copy(corners, points_.begin());
        for (std::size_t plane = 0; plane < planeNum; ++plane) {
            clip(plane);
        }
    }

    /// As a part of the picture's.
    [[nodiscard]] double area() const {
        double twice = 0;
        for (std::size_t i = 0; i < number_; ++i) {
            const Place a = placeOf(points_[i]);
            const Place b = placeOf(points_[(i + 1) % number_]);
            twice += a.x * b.y - b.x * a.y;
        }
        constexpr double picture = 2 * 2;
        return std::abs(twice) / 2 / picture;
    }

private:
    struct Place {
        double x;
        double y;
    };

    static Place placeOf(const ClipPoint& point) {
        const double w = std::max(point.w, std::numeric_limits<float>::min());
        return {point.x / w, point.y / w};
    }

    void clip(std::size_t plane) {
        const auto isInside = [&](const ClipPoint& point) { return distance(plane, point) >= 0; };
        if (std::all_of(points_.begin(), points_.begin() + static_cast<std::ptrdiff_t>(number_),
                        isInside)) {
            return;
        }
        const auto before = points_;
        const std::size_t beforeNum = number_;
        number_ = 0;
        for (std::size_t i = 0; i < beforeNum; ++i) {
            const ClipPoint& a = before[i];
            const ClipPoint& b = before[(i + 1) % beforeNum];
            if (isInside(a)) {
                points_[number_++] = a;
            }
            if (isInside(a) != isInside(b)) {
                const float t = distance(plane, a) / (distance(plane, a) - distance(plane, b));
                points_[number_++] = {std::lerp(a.x, b.x, t), std::lerp(a.y, b.y, t),
                                      std::lerp(a.z, b.z, t), std::lerp(a.w, b.w, t)};
            }
        }
    }

    std::array<ClipPoint, 3 + planeNum> points_{};
    std::size_t number_;
};

}  // namespace

double coveredPixels(const Camera& camera, const PixelArea& view,
                     std::span<const Vertex> vertices) {
    const std::array<float, 16> matrix = camera.matrix({0, 0, view.width, view.height});
    const auto clipPoint = [&](const Vector3& place) {
        const auto row = [&](std::size_t r) {
            return matrix[r] * place[0] + matrix[4 + r] * place[1] + matrix[8 + r] * place[2] +
                   matrix[12 + r];
        };
        return ClipPoint{row(0), row(1), row(2), row(3)};
    };
    double pictures = 0;
    for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
        pictures += ClippedTriangle({clipPoint(vertices[i].place), clipPoint(vertices[i + 1].place),
                                     clipPoint(vertices[i + 2].place)})
                        .area();
    }
    return pictures * view.width * view.height;
}

}  // namespace vxbtool::render
