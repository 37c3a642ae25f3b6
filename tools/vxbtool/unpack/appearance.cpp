#include "vxbtool/unpack/appearance.h"

#include "format/drawing_code.h"
#include "format/texture_fields.h"
#include "model/material.h"
#include "vxbtool/unpack/packet_polygon_kind.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::cornerField;
using mqf2vxb::Field;
using mqf2vxb::PacketFamily;
using mqf2vxb::PacketForm;
using mqf2vxb::PacketPolygon;
using mqf2vxb::VxbFile;

namespace drawing_code = mqf2vxb::drawing_code;
namespace material_flag = mqf2vxb::material_flag;
namespace polygon_type = mqf2vxb::polygon_type;
namespace type_code = mqf2vxb::type_code;

constexpr unsigned pageFlagShift = 3;  // of the texture page's bits in a material's flag
constexpr std::uint32_t unchangedColour = 0x808080;
constexpr std::uint32_t colourMask = 0xFFFFFF;

/// The letter of a kind with these numbers.
char kindLetter(bool textured, bool windowed, unsigned colours) {
    if (windowed) {
        return colours == 0 ? 'W' : colours == 1 ? 'S' : 'N';
    }
    if (textured) {
        return colours == 0 ? 'T' : colours == 1 ? 'D' : 'H';
    }
    return colours > 1 ? 'G' : 'C';
}

bool colourIsUnchanged(const PacketPolygon& polygon) {
    for (std::size_t i = 0; i < polygon.form->colours; ++i) {
        if ((polygon[cornerField(Field::C0, i)] & colourMask) != unchangedColour) {
            return false;
        }
    }
    return true;
}

std::uint32_t drawingOf(const PacketPolygon& polygon) { return polygon[Field::C0] >> 24U; }

/// Whether this is a further polygon of a strip with a drawing code of its own.
bool isFurtherCoded(const PacketPolygon& polygon) {
    return polygon.place > 0 && polygon.form->colours > 0;
}

/// A material's flag but for the bit of unlit polygons.
std::uint32_t flagOf(mqf2vxb::PrimitiveTypeCode code, const PacketPolygon& polygon) {
    std::uint32_t result = 0;
    const auto set = [&](std::uint32_t flag, bool when) { result |= when ? flag : 0; };
    set(material_flag::bit02, (code & type_code::flag02) != 0);
    set(material_flag::bit04, isFurtherCoded(polygon)
                                  ? (drawingOf(polygon) & drawing_code::flag04) != 0
                                  : (code & type_code::flag04) != 0);
    set(material_flag::doubleImage, (code & type_code::doubleImage) != 0);
    if (polygon.form->textured) {
        result |= mqf2vxb::texturePage(polygon[Field::page]).flagBits << pageFlagShift;
    }
    return result;
}

/// What the letters of a material stand for.
struct Surface {
    bool unlit = false;
    bool textured = false;
    unsigned colours = 0;
    char shading = 'F';
};

/// Makes the surface that of a strip's further polygon, of which the packet carries less.
void takeFurther(const PacketPolygon& polygon, const PointNumbers& points, bool shared,
                 Surface& surface) {
    const auto named = [&](Field field) { return points.isNormal(polygon[field], shared); };
    const bool perCorner =
        isFurtherCoded(polygon) && (drawingOf(polygon) & drawing_code::colourPerCorner) != 0;
    const bool doubleImage = polygon.form->family == PacketFamily::doubleImage;
    if (polygon.form->lit()) {
        const bool all = named(Field::N0) && named(Field::N1) && named(Field::N2);
        if (!all) {
            surface.shading = 'F';
        } else if (surface.colours == 1) {
            surface.shading = perCorner ? 'G' : 'F';
        }
        surface.unlit = surface.shading == 'F' && !named(Field::N0);
    } else if (surface.colours == 1 && perCorner && doubleImage) {
        surface.colours = 4;
    } else if (surface.colours == 1 && perCorner) {
        surface.unlit = false;
        surface.shading = 'G';
    } else if (surface.colours > 1 && !perCorner && doubleImage) {
        surface.colours = 0;
        surface.textured = true;
    }
}

}  // namespace

bool Appearance::lit() const { return (flag & material_flag::unlit) == 0; }

Appearance appearanceOf(const VxbFile& file, const mqf2vxb::PacketGroup& group,
                        const PacketPolygon& polygon, const PointNumbers& points) {
    const PacketForm& form = *polygon.form;
    Appearance look;
    look.type = polygonTypeOf(file, polygon, group.shared);
    look.flag = flagOf(group.code, polygon);
    Surface surface;
    surface.unlit = !form.lit();
    surface.colours = form.colours == 0 ? 0 : form.colours == 1 ? 1 : 4;
    surface.textured = form.textured;
    const bool smooth = form.lit() ? (group.code & type_code::smooth) != 0 : surface.colours > 1;
    surface.shading = smooth ? 'G' : 'F';
    if (isFurtherCoded(polygon) && look.type == polygon_type::triangle) {
        surface.textured = form.textured || (drawingOf(polygon) & drawing_code::textured) != 0;
    }
    if (polygon.place > 0) {
        takeFurther(polygon, points, group.shared, surface);
    }
    if (surface.unlit && surface.colours == 1 && surface.textured && colourIsUnchanged(polygon)) {
        surface.colours = 0;
    }
    look.flag |= surface.unlit ? material_flag::unlit : 0;
    look.shading = surface.shading;
    look.kind = kindLetter(surface.textured, form.windowed(), surface.colours);
    return look;
}

}  // namespace vxbtool::unpack
