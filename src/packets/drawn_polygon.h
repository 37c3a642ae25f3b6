#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "format/packet_forms.h"
#include "model/geometry.h"
#include "model/material.h"

namespace mqf2vxb {

/// A polygon on its way into a packet. The polygons of a strip are turned: what belongs to a corner
/// is asked for by the corner's place in the packet.
class DrawnPolygon {
public:
    /// The polygon's own corner for each corner of the packet.
    using Corners = std::array<std::uint8_t, 4>;

    DrawnPolygon(const MaterialRecord& material, MaterialAppearance look,
                 const PolygonRecord& record)
        : number(material.polygon), type(record.type), appearance(look), record_(record) {}

    const std::int32_t number;  ///< in the Polygon Data Base
    const std::int32_t type;
    const MaterialAppearance appearance;

    [[nodiscard]] std::int32_t vertex(std::size_t i) const { return record_.vertex[corner_[i]]; }
    /// The normals of a polygon that is not smooth are not turned with it.
    [[nodiscard]] std::int32_t normal(std::size_t i) const {
        return record_.normal[appearance.shading == 'G' ? corner_[i] : i];
    }
    [[nodiscard]] Colour colour(std::size_t i) const {
        return appearance.colour(appearance.colourPerVertex() ? corner_[i] : i);
    }
    [[nodiscard]] std::int32_t u(std::size_t i) const { return appearance.u(corner_[i]); }
    [[nodiscard]] std::int32_t v(std::size_t i) const { return appearance.v(corner_[i]); }

    [[nodiscard]] const Corners& corners() const { return corner_; }
    void turnTo(const Corners& corners) { corner_ = corners; }
    void exchangeCorners(std::size_t one, std::size_t other) {
        std::swap(corner_[one], corner_[other]);
    }

private:
    const PolygonRecord& record_;
    Corners corner_{0, 1, 2, 3};
};

/// The three most recent vertices of a strip, oldest first.
class StripVertices {
public:
    /// Turns the strip's polygon at position `k` so that corner 0 and corner 1 hold the vertices
    /// that it shares with the polygon before it, and takes its own in. The first polygon stays as
    /// it is; one that shares no vertex keeps its corners too.
    void follow(DrawnPolygon& drawn, std::size_t k);

private:
    void reorderStripPolygon(DrawnPolygon& drawn) const;

    std::array<std::int32_t, 3> stripVertex_{};
};

/// The colour that a packet of this form gives to a corner.
inline Colour packetColour(const PacketForm& form, const DrawnPolygon& drawn, std::size_t corner) {
    constexpr std::int32_t unchanged = 128;  // shows a texture as it is
    const bool unlit = drawn.appearance.unlit() || form.family == PacketFamily::doubleImage;
    if (unlit && drawn.appearance.colourless()) {
        return {unchanged, unchanged, unchanged};
    }
    return drawn.colour(corner);
}

/// The type whose drawing code the polygon has in packets of this form: a quadrangle in a strip is
/// drawn as the triangle of its first three corners.
std::int32_t drawnType(const PacketForm& form, const DrawnPolygon& drawn);

/// Whether polygons of this type have a drawing code.
constexpr bool hasDrawingCode(std::int32_t type) {
    return type >= polygon_type::triangle && type <= polygon_type::sprite;
}

/// The 8-bit drawing code of a polygon drawn as `type`, which has one.
std::uint32_t drawingCode(std::int32_t type, const DrawnPolygon& drawn);

}  // namespace mqf2vxb
