#include "vxbtool/render/camera.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>

namespace vxbtool::render {
namespace {

constexpr float halfAngle = 15 * std::numbers::pi_v<float> / 180;
/// The part of the picture that a fitted model may fill.
constexpr float fill = 0.94F;
/// The nearest depth as a part of the farthest: nearer, depths could not be told apart.
constexpr float leastDepth = 1e-3F;

float radians(float degrees) {
    return std::remainder(degrees, 360.0F) * std::numbers::pi_v<float> / 180;
}

}  // namespace

Camera::Camera(const Direction& direction, std::uint32_t width, std::uint32_t height)
    : width_(width), height_(height) {
    const float turnSine = std::sin(radians(direction.turn));
    const float turnCosine = std::cos(radians(direction.turn));
    const float tiltSine = std::sin(radians(direction.tilt));
    const float tiltCosine = std::cos(radians(direction.tilt));
    axes_ = {Vector3{turnCosine, 0, -turnSine},
             Vector3{-turnSine * tiltSine, tiltCosine, -turnCosine * tiltSine},
             Vector3{turnSine * tiltCosine, tiltSine, turnCosine * tiltCosine}};
    // The smaller side has the angle.
    const float slope = std::tan(halfAngle) / static_cast<float>(std::min(width, height));
    slopes_ = {slope * static_cast<float>(width), slope * static_cast<float>(height)};
}

float Camera::along(std::size_t axis, const Vector3& place) const {
    return std::inner_product(place.begin(), place.end(), axes_[axis].begin(), 0.0F);
}

void Camera::fit(std::span<const Vector3> points) {
    // A point at (x, z) is in the picture when |x - middle| <= slope * (distance - z).
    constexpr float least = std::numeric_limits<float>::lowest();
    std::array<float, 2> upper{least, least}, lower{least, least};
    float nearest = least;
    float size = 1;
    for (const Vector3& point : points) {
        const float z = along(2, point);
        nearest = std::max(nearest, z);
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const float x = along(axis, point);
            upper[axis] = std::max(upper[axis], x + fill * slopes_[axis] * z);
            lower[axis] = std::max(lower[axis], -x + fill * slopes_[axis] * z);
        }
        for (const float value : point) {
            size = std::max(size, std::abs(value));
        }
    }
    if (points.empty()) {
        return;
    }
    distance_ = nearest + size * leastDepth;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        middle_[axis] = (upper[axis] - lower[axis]) / 2;
        distance_ = std::max(distance_, (upper[axis] + lower[axis]) / (2 * fill * slopes_[axis]));
    }
}

void Camera::setDepths(std::span<const Vector3> points) {
    near_ = std::numeric_limits<float>::max();
    far_ = 0;
    for (const Vector3& point : points) {
        near_ = std::min(near_, depth(point));
        far_ = std::max(far_, depth(point));
    }
    // A little more on both sides, for what the numbers do not tell exactly.
    far_ = std::max(far_ * (1 + leastDepth), leastDepth);
    near_ = std::clamp(near_ * (1 - leastDepth), far_ * leastDepth, far_ * (1 - leastDepth));
}

std::array<float, 16> Camera::matrix(const PixelArea& area) const {
    // The area is stretched over the whole of clip space.
    const std::array<float, 2> size{static_cast<float>(width_), static_cast<float>(height_)};
    const std::array<float, 2> part{static_cast<float>(area.width),
                                    static_cast<float>(area.height)};
    const std::array<float, 2> start{static_cast<float>(area.x),
                                     size[1] - static_cast<float>(area.y) - part[1]};
    std::array<float, 16> matrix{};
    const auto at = [&matrix](std::size_t row, std::size_t column) -> float& {
        return matrix[column * 4 + row];
    };
    for (std::size_t row = 0; row < 2; ++row) {
        const float scale = size[row] / part[row] / slopes_[row];
        // In clip space, w is the depth.
        const float shift = (size[row] - 2 * start[row]) / part[row] - 1;
        for (std::size_t i = 0; i < 3; ++i) {
            at(row, i) = scale * axes_[row][i] - shift * axes_[2][i];
        }
        at(row, 3) = -scale * middle_[row] + shift * distance_;
    }
    const float range = far_ - near_;
    for (std::size_t i = 0; i < 3; ++i) {
        at(2, i) = -(far_ + near_) / range * axes_[2][i];
        at(3, i) = -axes_[2][i];
    }
    at(2, 3) = ((far_ + near_) * distance_ - 2 * far_ * near_) / range;
    at(3, 3) = distance_;
    return matrix;
}

Vector3 Camera::fromViewer(const Vector3& direction) const {
    Vector3 result{};
    for (std::size_t i = 0; i < 3; ++i) {
        result[i] =
            axes_[0][i] * direction[0] + axes_[1][i] * direction[1] + axes_[2][i] * direction[2];
    }
    return result;
}

}  // namespace vxbtool::render
