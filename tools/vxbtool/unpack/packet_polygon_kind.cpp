#include "vxbtool/unpack/packet_polygon_kind.h"

#include "format/drawing_code.h"
#include "model/geometry.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::Field;
namespace polygon_type = mqf2vxb::polygon_type;
namespace drawing_code = mqf2vxb::drawing_code;

}  // namespace

std::int32_t polygonTypeOf(const mqf2vxb::VxbFile& file, const mqf2vxb::PacketPolygon& polygon,
                           bool shared) {
    if (polygon.corners() == 4) {
        return polygon_type::quadrangle;
    }
    if (!polygon.form->strip()) {
        return polygon_type::triangle;
    }
    if (polygon.form->colours > 0) {
        switch (polygon[Field::C0] >> 24U & drawing_code::kindMask) {
        case drawing_code::line: return polygon_type::line;
        case drawing_code::sprite: return polygon_type::sprite;
        default: return polygon_type::triangle;
        }
    }
    const std::uint32_t vertices =
        file.vertices.shared.number + (shared ? 0 : file.vertices.independent.number);
    if (polygon.place > 0) {
        const bool known = polygon.vertex(2) < vertices;
        return known ? polygon_type::triangle : shared ? polygon_type::line : polygon_type::sprite;
    }
    const bool triangle = polygon.vertex(0) < vertices && polygon.vertex(1) < vertices &&
                          polygon.vertex(2) < vertices;
    return triangle ? polygon_type::triangle : polygon_type::line;
}

std::size_t cornersOf(const mqf2vxb::VxbFile& file, const mqf2vxb::PacketPolygon& polygon,
                      bool shared) {
    return mqf2vxb::vertexCount(polygonTypeOf(file, polygon, shared));
}

}  // namespace vxbtool::unpack
