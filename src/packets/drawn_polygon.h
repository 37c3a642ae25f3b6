#pragma once

#include <array>
#include <cstdint>

#include "model/geometry.h"
#include "model/material.h"
#include "packets/packet_forms.h"

namespace mqf2vxb {

/// A polygon on its way into a packet: its own copy of everything that belongs to a corner, since
/// the polygons of a strip are turned.
struct DrawnPolygon {
    DrawnPolygon(const MaterialRecord& material, const MaterialAppearance& look,
                 const PolygonRecord& record);

    std::int32_t number;  ///< in the Polygon Data Base
    const MaterialAppearance& appearance;
    PolygonRecord polygon;
    std::array<std::int32_t, 4> r;
    std::array<std::int32_t, 4> g;
    std::array<std::int32_t, 4> b;
    std::array<std::int32_t, 4> u;
    std::array<std::int32_t, 4> v;

    /// Exchanges two corners with everything that goes with them.
    void exchangeCorners(std::size_t one, std::size_t other);
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

/// The colour of one corner.
struct Colour {
    std::int32_t r;
    std::int32_t g;
    std::int32_t b;
};

/// The colour that a packet of this form gives to a corner.
Colour packetColour(const PacketForm& form, const DrawnPolygon& drawn, std::size_t corner);

/// The type whose drawing code the polygon has in packets of this form: a quadrangle in a strip is
/// drawn as the triangle of its first three corners.
std::int32_t drawnType(const PacketForm& form, const DrawnPolygon& drawn);

/// The 8-bit drawing code of a polygon drawn as `type`. A type that has none is reported.
std::uint32_t drawingCode(std::int32_t type, const DrawnPolygon& drawn);

}  // namespace mqf2vxb
