#include "packets/drawn_polygon.h"

namespace mqf2vxb {
namespace {

std::uint32_t spriteCode(const DrawnPolygon& drawn) {
    const auto isSquare = [&](std::int32_t size) {
        return drawn.vertex(1) == size && drawn.vertex(2) == size;
    };
    constexpr std::uint32_t freeSize = 0x60;
    constexpr std::uint32_t size1 = 0x68;
    constexpr std::uint32_t size8 = 0x70;
    constexpr std::uint32_t size16 = 0x78;
    return isSquare(1) ? size1 : isSquare(8) ? size8 : isSquare(16) ? size16 : freeSize;
}

}  // namespace

void StripVertices::follow(DrawnPolygon& drawn, std::size_t k) {
    if (k == 0) {
        stripVertex_ = {drawn.vertex(0), drawn.vertex(1), drawn.vertex(2)};
        return;
    }
    reorderStripPolygon(drawn);
    stripVertex_ = {stripVertex_[1], stripVertex_[2], drawn.vertex(2)};
}

void StripVertices::reorderStripPolygon(DrawnPolygon& drawn) const {
    for (std::size_t j = 1; j <= 2; ++j) {
        std::size_t corner = 0;
        while (corner < stripVertex_.size() && drawn.vertex(corner) != stripVertex_[j]) {
            ++corner;
        }
        if (corner < stripVertex_.size()) {
            drawn.exchangeCorners(corner, j - 1);
        }
    }
}

std::int32_t drawnType(const PacketForm& form, const DrawnPolygon& drawn) {
    if (form.strip() && drawn.type == polygon_type::quadrangle) {
        return polygon_type::triangle;
    }
    return drawn.type;
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
    case polygon_type::sprite: code |= spriteCode(drawn) | texturedBit; break;
    default: unknownGeoFlag(drawn.number, type);
    }
    return code;
}

}  // namespace mqf2vxb
