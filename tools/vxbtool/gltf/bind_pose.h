#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "vxbtool/scene/placements.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::gltf {

/// The joints of shared polygons. Their corners stand where they are at rest, so that the mesh has its
/// shape before anything moves it.
class BindPose {
public:
    BindPose(const scene::Scene& scene, double unit);

    /// Where a corner stands in the mesh, and its normal, of length 1.
    [[nodiscard]] scene::Vector3 place(const scene::Corner& corner) const;
    [[nodiscard]] scene::Vector3 normal(const scene::Corner& corner) const;
    /// The 16 numbers, column by column, that lead from the mesh into a coordinate's space.
    [[nodiscard]] std::array<float, 16> inverse(std::uint32_t coordinate) const;

private:
    /// Whether a coordinate has a way back. Corners of one that has none stand in its own space.
    [[nodiscard]] bool hasInverse(std::uint32_t coordinate) const;

    std::vector<scene::Placement> atRest_;
    float unit_;
};

}  // namespace vxbtool::gltf
