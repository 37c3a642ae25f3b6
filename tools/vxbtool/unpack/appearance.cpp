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

}  // namespace

bool Appearance::lit() const { return (flag & material_flag::unlit) == 0; }

Appearance appearanceOf(const VxbFile& file, const mqf2vxb::PacketGroup& group,
                        const PacketPolygon& polygon, const PointNumbers& points) {
    const PacketForm& form = *polygon.form;
    const mqf2vxb::PrimitiveTypeCode code = group.code;
    const bool further = polygon.place > 0;
    const bool coded = form.colours > 0;
    const std::uint32_t drawing = polygon[Field::C0] >> 24U;
    Appearance look;
    look.type = polygonTypeOf(file, polygon, group.shared);

    const auto set = [&](std::uint32_t flag, bool when) { look.flag |= when ? flag : 0; };
    bool unlit = !form.lit();
    set(material_flag::bit02, (code & type_code::flag02) != 0);
    set(material_flag::bit04,
        further && coded ? (drawing & drawing_code::flag04) != 0 : (code & type_code::flag04) != 0);
    set(material_flag::doubleImage, (code & type_code::doubleImage) != 0);
    if (form.textured) {
        look.flag |= mqf2vxb::texturePage(polygon[Field::page]).flagBits << pageFlagShift;
    }

    const bool perCorner =
        further && coded ? (drawing & drawing_code::colourPerCorner) != 0 : false;
    unsigned colours = form.colours == 0 ? 0 : form.colours == 1 ? 1 : 4;
    bool textured = form.textured;
    if (further && coded && look.type == polygon_type::triangle) {
        textured = textured || (drawing & drawing_code::textured) != 0;
    }
    const bool doubleImage = form.family == PacketFamily::doubleImage;
    look.shading = form.lit()    ? ((code & type_code::smooth) != 0 ? 'G' : 'F')
                   : colours > 1 ? 'G'
                                 : 'F';
    if (further) {
        const bool smoothNormals = points.isNormal(polygon[Field::N0], group.shared) &&
                                   points.isNormal(polygon[Field::N1], group.shared) &&
                                   points.isNormal(polygon[Field::N2], group.shared);
        if (form.lit()) {
            if (colours == 1) {
                look.shading = perCorner ? 'G' : 'F';
            } else if (!smoothNormals) {
                look.shading = 'F';
            }
            unlit = look.shading == 'F' && !points.isNormal(polygon[Field::N0], group.shared);
        } else if (colours == 1 && perCorner && doubleImage) {
            colours = 4;
        } else if (colours == 1 && perCorner) {
            unlit = false;
            look.shading = 'G';
        } else if (colours > 1 && !perCorner && doubleImage) {
            colours = 0;
            textured = true;
        }
    }
    if (unlit && colours == 1 && textured && colourIsUnchanged(polygon)) {
        colours = 0;
    }
    set(material_flag::unlit, unlit);
    look.kind = kindLetter(textured, form.windowed(), colours);
    return look;
}

}  // namespace vxbtool::unpack
