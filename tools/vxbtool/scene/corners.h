#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "vxb/packet_decoder.h"
#include "vxbtool/scene/placements.h"
#include "vxbtool/scene/scene.h"
#include "vxbtool/shared/packet_owners.h"

namespace vxbtool::scene {

/// Makes the corners of a file's polygons. Shared polygons have each in the space of its own
/// coordinate, all others in that of the coordinate that draws them.
class CornerReader {
public:
    /// The scene has its coordinates.
    CornerReader(const mqf2vxb::VxbFile& file, const Scene& scene)
        : file_(file), owners_(file), atRest_(placements(scene)) {}

    /// Whether the file has all vertices of a polygon.
    [[nodiscard]] bool complete(const mqf2vxb::PacketPolygon& packet, bool shared) const;
    /// A corner of a complete polygon, without its texel. Its normal is 0 when the packet names none,
    /// or one that has no direction.
    [[nodiscard]] Corner corner(const mqf2vxb::PacketPolygon& packet, std::size_t number,
                                bool shared) const;
    /// Makes the corners of a triangle run clockwise and those of a quadrangle like a strip, of shared
    /// polygons where they stand at rest, and gives lit ones without a normal that of their face.
    void finish(const mqf2vxb::PacketPolygon& packet, std::span<Corner> corners, bool shared) const;

private:
    /// The placement that shared polygons have a corner in; nothing when it needs none.
    [[nodiscard]] const Placement* placementOf(std::optional<std::uint32_t> coordinate,
                                               bool shared) const;
    [[nodiscard]] Vector3 normal(std::uint32_t index, bool shared, const Corner& corner) const;

    const mqf2vxb::VxbFile& file_;
    SharedOwners owners_;
    std::vector<Placement> atRest_;
};

}  // namespace vxbtool::scene
