#include "packets/drawn_polygon.h"

#include <algorithm>
#include <utility>

#include "driver/diagnostics.h"

namespace mqf2vxb {
namespace {

std::uint32_t spriteCode(const PolygonRecord& polygon) {
    const auto isSquare = [&](std::int32_t size) {
        return polygon.vertex[1] == size && polygon.vertex[2] == size;
    };
    constexpr std::uint32_t freeSize = 0x60;
    constexpr std::uint32_t size1 = 0x68;
    constexpr std::uint32_t size8 = 0x70;
    constexpr std::uint32_t size16 = 0x78;
    return isSquare(1) ? size1 : isSquare(8) ? size8 : isSquare(16) ? size16 : freeSize;
}

}  // namespace

DrawnPolygon::DrawnPolygon(const MaterialRecord& material, const MaterialAppearance& look,
                           const PolygonRecord& record)
    : number(material.polygon),
      appearance(look),
      polygon(record),
      r(look.r),
      g(look.g),
      b(look.b),
      u(look.u),
      v(look.v) {}

void DrawnPolygon::exchangeCorners(std::size_t one, std::size_t other) {
    const auto exchange = [&](std::array<std::int32_t, 4>& values) {
        std::swap(values[one], values[other]);
    };
    if (appearance.colourPerVertex()) {
        exchange(r);
        exchange(g);
        exchange(b);
    }
    if (appearance.textured()) {
        exchange(u);
        exchange(v);
    }
    if (appearance.shading == 'G') {
        exchange(polygon.normal);
    }
    exchange(polygon.vertex);
}

void StripVertices::follow(DrawnPolygon& drawn, std::size_t k) {
    if (k == 0) {
        std::copy_n(drawn.polygon.vertex.begin(), stripVertex_.size(), stripVertex_.begin());
        return;
    }
    reorderStripPolygon(drawn);
    stripVertex_ = {stripVertex_[1], stripVertex_[2], drawn.polygon.vertex[2]};
}

void StripVertices::reorderStripPolygon(DrawnPolygon& drawn) const {
    const auto& vertex = drawn.polygon.vertex;
    const auto end = vertex.begin() + stripVertex_.size();
    for (std::size_t j = 1; j <= 2; ++j) {
        const auto found = std::find(vertex.begin(), end, stripVertex_[j]);
        const auto corner = static_cast<std::size_t>(found - vertex.begin());
        if (found != end && corner != j - 1) {
            drawn.exchangeCorners(corner, j - 1);
        }
    }
}

Colour packetColour(const PacketForm& form, const DrawnPolygon& drawn, std::size_t corner) {
    constexpr std::int32_t unchanged = 128;  // shows a texture as it is
    const bool unlit = drawn.appearance.unlit() || form.family == PacketFamily::doubleImage;
    if (unlit && drawn.appearance.colourless()) {
        return {unchanged, unchanged, unchanged};
    }
    return {drawn.r[corner], drawn.g[corner], drawn.b[corner]};
}

std::int32_t drawnType(const PacketForm& form, const DrawnPolygon& drawn) {
    if (form.strip() && drawn.polygon.type == polygon_type::quadrangle) {
        return polygon_type::triangle;
    }
    return drawn.polygon.type;
}

std::uint32_t drawingCode(std::int32_t type, const DrawnPolygon& drawn) {
    const MaterialAppearance& appearance = drawn.appearance;
    const bool smoothlyLit = !appearance.unlit() && appearance.shading == 'G';
    const bool perCorner = appearance.colourPerVertex() || smoothlyLit;
    constexpr std::uint32_t perCornerBit = 0x10;
    constexpr std::uint32_t quadrangleBit = 0x08;
    constexpr std::uint32_t texturedBit = 0x04;
    constexpr std::uint32_t flag04Bit = 0x02;

    std::uint32_t code = (appearance.flag & material_flag::bit04) != 0 ? flag04Bit : 0;
    switch (type) {
    case polygon_type::triangle:
    case polygon_type::quadrangle:
        code |= 0x20 | (perCorner ? perCornerBit : 0) |
                (type == polygon_type::quadrangle ? quadrangleBit : 0) |
                (appearance.textured() ? texturedBit : 0);
        break;
    case polygon_type::line: code |= 0x40 | (perCorner ? perCornerBit : 0); break;
    case polygon_type::sprite: code |= spriteCode(drawn.polygon) | texturedBit; break;
    default: unknownGeoFlag(drawn.number, type);
    }
    return code;
}

}  // namespace mqf2vxb
