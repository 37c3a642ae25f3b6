#include "packets/drawn_polygon.h"

#include "base/diagnostics.h"
#include "format/drawing_code.h"

namespace mqf2vxb {
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
    std::uint32_t code = 0;
    const auto set = [&code](std::uint32_t bits, bool when) { code |= when ? bits : 0; };
    set(drawing_code::flag04, (appearance.flag & material_flag::bit04) != 0);
    switch (type) {
    case polygon_type::triangle:
    case polygon_type::quadrangle:
        set(drawing_code::face, true);
        set(drawing_code::colourPerCorner, perCorner);
        set(drawing_code::quadrangle, type == polygon_type::quadrangle);
        set(drawing_code::textured, appearance.textured());
        break;
    case polygon_type::line:
        set(drawing_code::line, true);
        set(drawing_code::colourPerCorner, perCorner);
        break;
    case polygon_type::sprite:
        set(drawing_code::sprite | drawing_code::textured, true);
        set(drawing_code::spriteSize(drawn.vertex(1), drawn.vertex(2)), true);
        break;
    default: unknownGeoFlag(drawn.number, type);
    }
    return code;
}

}  // namespace mqf2vxb
