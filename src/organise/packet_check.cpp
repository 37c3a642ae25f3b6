#include "organise/packet_check.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/diagnostics.h"
#include "format/format.h"
#include "packets/packet_groups.h"

namespace mqf2vxb {
namespace {

/// The colour words of a strip's polygon with a colour per corner.
std::size_t cornerColours(const PacketForm& form, const DrawnPolygon& drawn) {
    switch (drawnType(form, drawn)) {
    case polygon_type::line: return 2;
    case polygon_type::sprite: return 1;
    default: return 3;
    }
}

/// Whether the material brings the colour words that the packets of this strip have.
bool fillsColours(const PacketForm& form, const DrawnPolygon& drawn) {
    const MaterialAppearance& appearance = drawn.appearance;
    const bool perCorner = appearance.colourPerVertex();
    switch (form.family) {
    case PacketFamily::doubleImage:
        return form.colours == 1 || perCorner || appearance.colourless();
    case PacketFamily::window: return form.colours == (perCorner ? cornerColours(form, drawn) : 0);
    case PacketFamily::lit:
        return form.colours == 0 || form.colours == (perCorner ? cornerColours(form, drawn) : 1);
    default: return form.colours == (perCorner ? cornerColours(form, drawn) : 1);
    }
}

/// Whether the polygon's colour words end the run, because its type has no drawing code.
bool endsAtColours(const PacketForm& form, const DrawnPolygon& drawn) {
    const bool coloured = form.family != PacketFamily::window || drawn.appearance.colourPerVertex();
    return !hasDrawingCode(drawn.type) && form.colours > 0 && coloured;
}

/// Whether nothing else is made of the polygon before its colour words.
bool coloursComeFirst(const PacketForm& form) {
    return form.family == PacketFamily::lit || form.family == PacketFamily::unlit;
}

/// What a strip's polygon lacks of what the packets of the strip have; null when it has all.
const char* missingInStrip(const PacketForm& form, const DrawnPolygon& drawn) {
    const bool ends = endsAtColours(form, drawn);
    if (ends && coloursComeFirst(form)) {
        return nullptr;
    }
    if (form.textured && !drawn.appearance.textured()) {
        return "no texture";
    }
    if (form.windowed() && !drawn.appearance.windowed()) {
        return "no texture window";
    }
    return ends || fillsColours(form, drawn) ? nullptr : "another number of colours";
}

/// Whether all strips have what their packets need: looks at the materials in their own order, which
/// takes less time than the order of the strips.
bool allStripsFilled(const Model& model) {
    const auto filled = [&](const MaterialRecord& material) {
        const PacketForm* form = findPacketForm(material.type);
        return form == nullptr || !form->strip() ||
               missingInStrip(*form, drawnPolygon(model, material)) == nullptr;
    };
    return model.meshes.empty() ||
           std::all_of(model.materials.records.begin(), model.materials.records.end(), filled);
}

bool hasTexture(const Model& model, std::int32_t texture) {
    return texture >= 0 && static_cast<std::size_t>(texture) < model.images.size();
}

/// Whether all numbers of all polygons and materials fit, drawn or not. They do in nearly every
/// model, and this look costs less than one at every packet.
bool allNumbersFit(const Model& model) {
    std::uint32_t indices = 0;
    for (const PolygonRecord& polygon : model.polygons) {
        for (std::size_t i = 0; i < polygon.vertex.size(); ++i) {
            indices |= static_cast<std::uint32_t>(polygon.vertex[i] | polygon.normal[i]);
        }
    }
    std::uint32_t numbers = 0;
    for (const std::int32_t number : model.materials.numbers) {
        numbers |= static_cast<std::uint32_t>(number);
    }
    const auto textureFits = [&](const MaterialLine& line) {
        const MaterialAppearance look = model.materials.appearance(line);
        return !look.textured() || hasTexture(model, look.texture());
    };
    return format::indexFits(indices) && format::colourFits(numbers) &&
           std::all_of(model.materials.lines.begin(), model.materials.lines.end(), textureFits);
}

/// Looks at what each packet carries and refuses what its words could not hold.
class PacketCheck {
public:
    explicit PacketCheck(const Model& model) : model_(model) {}

    void polygon(const PacketForm& form, const MaterialRecord& /*material*/,
                 const DrawnPolygon& drawn) const {
        checkPacket(form, form.packet, drawn);
    }

    void strip(std::size_t mesh) { mesh_ = mesh; }

    void stripPolygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) const {
        if (const char* const missing = missingInStrip(form, drawn)) {
            refuseMesh(drawn, missing);
        }
        checkPacket(form, k == 0 ? form.packet : form.further, drawn);
    }

private:
    void checkPacket(const PacketForm& form, const PacketWords& words,
                     const DrawnPolygon& drawn) const {
        const bool ends = endsAtColours(form, drawn);
        if (ends && coloursComeFirst(form)) {
            return;
        }
        const std::int32_t texture = drawn.appearance.texture();
        if (form.textured && !hasTexture(model_, texture)) {
            refuseMaterial(drawn, "texture " + std::to_string(texture) +
                                      ", which the model does not have");
        }
        if (ends) {
            return;
        }
        for (std::size_t i = 0; i < form.colours; ++i) {
            const Colour colour = packetColour(form, drawn, i);
            checkColour(drawn, colour.r);
            checkColour(drawn, colour.g);
            checkColour(drawn, colour.b);
        }
        for (std::size_t i = 0; i < form.corners(); ++i) {
            if (words.has(cornerField(Field::V0, i))) {
                checkIndex(drawn, "vertex", drawn.vertex(i));
            }
            if (words.has(cornerField(Field::N0, i))) {
                checkIndex(drawn, "normal", drawn.normal(i));
            }
        }
    }

    void checkIndex(const DrawnPolygon& drawn, const std::string& what, std::int32_t index) const {
        if (!format::indexFits(static_cast<std::uint32_t>(index))) {
            notCorrectData({model_.description.geo.fileName},
                           "polygon " + std::to_string(drawn.number) + " has the " + what +
                               " index " + std::to_string(index) +
                               ", and a packet holds 0 to 65535");
        }
    }

    void checkColour(const DrawnPolygon& drawn, std::int32_t component) const {
        if (!format::colourFits(static_cast<std::uint32_t>(component))) {
            refuseMaterial(drawn, "the colour component " + std::to_string(component) +
                                      ", and a packet holds 0 to 255");
        }
    }

    [[noreturn]] void refuseMaterial(const DrawnPolygon& drawn, const std::string& what) const {
        notCorrectData({model_.description.srf.fileName},
                       "polygon " + std::to_string(drawn.number) + " has " + what);
    }
    [[noreturn]] void refuseMesh(const DrawnPolygon& drawn, const std::string& what) const {
        notCorrectData({model_.description.bnd.fileName},
                       "polygon " + std::to_string(drawn.number) + " of mesh " +
                           std::to_string(mesh_) + " has " + what +
                           ", unlike the packets of its mesh");
    }

    const Model& model_;
    std::size_t mesh_ = 0;
};

}  // namespace

void checkPackets(const Model& model) {
    if (!allNumbersFit(model) || !allStripsFilled(model)) {
        PacketCheck check(model);
        walkDrawn(model, check);
    }
}

}  // namespace mqf2vxb
