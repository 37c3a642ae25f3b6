#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "packets/drawn_polygon.h"
#include "vxb/packet_decoder.h"
#include "vxb/vxb_file.h"
#include "vxbtool/unpack/appearance.h"
#include "vxbtool/unpack/owners.h"
#include "vxbtool/unpack/point_numbers.h"

namespace vxbtool::unpack {

/// Finds the corners that polygons have in the GEO file. A strip turns its polygons, and carries one
/// vertex of each further one: the others are chosen so that the strip turns the polygon to it, and
/// that the polygon is shared or not as the packet says.
class CornerChoice {
public:
    CornerChoice(const mqf2vxb::VxbFile& file, const Owners& owners, const PointNumbers& points);

    using Vertices = std::array<std::uint32_t, 4>;
    /// The vertices of the next polygon, in the order of the file, as numbers of the GEO file.
    Vertices choose(const mqf2vxb::PacketGroup& group, const mqf2vxb::PacketPolygon& packet,
                    const Appearance& look);
    /// The polygon's own corner for each of the packet's.
    [[nodiscard]] const mqf2vxb::DrawnPolygon::Corners& corners() const { return corners_; }

private:
    struct Turning;

    void findHidden();
    [[nodiscard]] bool shared() const { return group_->shared; }
    [[nodiscard]] std::uint32_t geoVertex(std::uint32_t vertex, std::int32_t type) const {
        return points_.geoVertex(vertex, shared(), type);
    }
    [[nodiscard]] std::uint32_t sharedCoordinate(std::uint32_t vertex) const;
    [[nodiscard]] Turning tryTurn(const Vertices& own, const Appearance& look,
                                  std::size_t place) const;
    void adopt(const Turning& turning);
    bool takeVertices(const mqf2vxb::PacketPolygon& packet, const Appearance& look,
                      std::uint32_t first, std::uint32_t second, Vertices& own);
    [[nodiscard]] bool liesRight(const Vertices& vertices, std::int32_t type) const;
    [[nodiscard]] bool normalsLieRight(const mqf2vxb::PacketPolygon& packet,
                                       const Vertices& vertices, const Turning& turning,
                                       std::int32_t type) const;
    [[nodiscard]] std::optional<std::uint32_t>
    coordinateOfNormal(const mqf2vxb::PacketPolygon& packet, std::size_t corner) const;
    bool takeFurther(const mqf2vxb::PacketPolygon& packet, const Appearance& look, Vertices& own);
    bool takeHidden(const mqf2vxb::PacketPolygon& packet, const Appearance& look, Vertices& own);
    bool takeKnown(const mqf2vxb::PacketPolygon& packet, const Appearance& look, Vertices& own);

    const mqf2vxb::VxbFile& file_;
    const Owners& owners_;
    const PointNumbers& points_;
    std::vector<std::uint32_t> hidden_;  // shared vertices that no packet names
    std::uint32_t elsewhere_ = 0;        // a shared vertex of another coordinate than the first
    std::unordered_map<std::uint32_t, std::uint32_t> vertexIn_;  // a shared vertex by coordinate
    std::vector<std::uint32_t> byNormals_;  // vertices in the coordinates of the polygon's normals
    bool keepNormals_ = false;              // only they will do
    const mqf2vxb::PacketGroup* group_ = nullptr;
    mqf2vxb::StripVertices strip_;
    std::uint32_t anchor_ = 0;  // the first vertex of the strip
    mqf2vxb::DrawnPolygon::Corners corners_{0, 1, 2, 3};
};

}  // namespace vxbtool::unpack
