#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "vxbtool/render/request.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::render {

using scene::Vector3;

/// A rectangle of pixels; the lines count from the top.
struct PixelArea {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// A view in perspective of a picture of this size.
class Camera {
public:
    Camera(const Direction& direction, std::uint32_t width, std::uint32_t height);

    /// Goes as near as it can with all the points in the picture, and looks at their middle.
    void fit(std::span<const Vector3> points);
    /// The distance from the origin's plane; what is larger makes the model smaller.
    [[nodiscard]] float distance() const { return distance_; }
    void setDistance(float distance) { distance_ = distance; }
    /// Draws what lies between these points' nearest and farthest.
    void setDepths(std::span<const Vector3> points);

    /// How far a place lies in front of the viewer.
    [[nodiscard]] float depth(const Vector3& place) const { return distance_ - along(2, place); }
    /// From the model to clip space, column by column, of an area of the picture.
    [[nodiscard]] std::array<float, 16> matrix(const PixelArea& area) const;
    /// A direction as the viewer sees it (to the right, up, towards them) in the model's axes.
    [[nodiscard]] Vector3 fromViewer(const Vector3& direction) const;

private:
    [[nodiscard]] float along(std::size_t axis, const Vector3& place) const;

    std::array<Vector3, 3> axes_{};  // to the right, up and towards the viewer
    std::uint32_t width_;
    std::uint32_t height_;
    std::array<float, 2> slopes_{};  // half of the picture's extent at a distance of 1
    std::array<float, 2> middle_{};
    float distance_ = 1;
    float near_ = 1;
    float far_ = 2;
};

}  // namespace vxbtool::render
