#include "vxbtool/gltf/bind_pose.h"

#include <algorithm>
#include <cmath>

namespace vxbtool::gltf {
namespace {

/// The vectors across each two columns of a matrix, which are the rows of its inverse but for the
/// determinant.
std::array<scene::Vector3, 3> across(const scene::Matrix& m) {
    const scene::Vector3 x{m[0], m[3], m[6]};
    const scene::Vector3 y{m[1], m[4], m[7]};
    const scene::Vector3 z{m[2], m[5], m[8]};
    return {scene::cross(y, z), scene::cross(z, x), scene::cross(x, y)};
}

float determinant(const scene::Matrix& m) {
    const scene::Vector3 yz = across(m)[0];
    return m[0] * yz[0] + m[3] * yz[1] + m[6] * yz[2];
}

}  // namespace

BindPose::BindPose(const scene::Scene& scene, double unit)
    : atRest_(scene::placements(scene)), unit_(static_cast<float>(unit)) {}

bool BindPose::hasInverse(std::uint32_t coordinate) const {
    // Beyond these the inverse has no numbers that are exact enough, or none at all.
    constexpr float least = 1e-6F;
    constexpr float farthest = 1e10F;
    const scene::Placement& placement = atRest_[coordinate];
    const scene::Matrix matrix = scene::matrixOf(placement);
    const float volume = std::abs(determinant(matrix));
    const auto isBelow = [](float most) {
        return [most](float value) { return std::abs(value) < most; };
    };
    return volume > least && volume < 1 / least &&
           std::ranges::all_of(matrix, isBelow(1 / least)) &&
           std::ranges::all_of(placement, isBelow(farthest));
}

scene::Vector3 BindPose::place(const scene::Corner& corner) const {
    scene::Vector3 place = corner.place;
    if (hasInverse(corner.coordinate)) {
        place = scene::transformed(atRest_[corner.coordinate], place);
    }
    return {place[0] * unit_, place[1] * unit_, place[2] * unit_};
}

scene::Vector3 BindPose::normal(const scene::Corner& corner) const {
    if (!hasInverse(corner.coordinate)) {
        return corner.normal;
    }
    return scene::normalised(
               scene::transformedNormal(scene::matrixOf(atRest_[corner.coordinate]), corner.normal))
        .value_or(corner.normal);
}

std::array<float, 16> BindPose::inverse(std::uint32_t coordinate) const {
    std::array<float, 16> result{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    if (!hasInverse(coordinate)) {
        return result;
    }
    const scene::Placement& placement = atRest_[coordinate];
    const scene::Matrix matrix = scene::matrixOf(placement);
    const std::array<scene::Vector3, 3> rows = across(matrix);
    const float whole = determinant(matrix);
    for (std::size_t row = 0; row < 3; ++row) {
        float moved = 0;
        for (std::size_t column = 0; column < 3; ++column) {
            const float value = rows[row][column] / whole;
            result[column * 4 + row] = value;
            moved += value * placement[column * 4 + 3];
        }
        result[12 + row] = -moved * unit_;
    }
    return result;
}

}  // namespace vxbtool::gltf
