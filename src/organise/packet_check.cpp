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

/// What a strip's polygon lacks of what the packets of the strip have; null when it has all.
const char* missingInStrip(const PacketForm& form, const DrawnPolygon& drawn) {
    if (form.textured && !drawn.appearance.textured()) {
        return "no texture";
    }
    if (form.windowed() && !drawn.appearance.windowed()) {
        return "no texture window";
    }
    return fillsColours(form, drawn) ? nullptr : "another number of colours";
}

/// The numbers of vertices and of normals that packets can point at: an index counts from the first
/// record of all, that of a shared polygon from the first shared one.
struct Blocks {
    Blocks(const Model& model, bool shared)
        : vertices(shared ? model.primitives.SharedVertexTotal : model.vertices.size()),
          normals(shared ? model.primitives.SharedNormalTotal : model.normals.size()) {}

    std::size_t vertices;
    std::size_t normals;
};

/// Whether all indices that a strip may take from this polygon are in their blocks. A polygon has
/// the packets of its mesh's first: an unlit one may have to bring normals that nothing else asks
/// for, a line or a sprite more vertices than it has.
bool indicesInBlocks(const Model& model, const PacketForm& form, const DrawnPolygon& drawn,
                     const Blocks& blocks) {
    const bool lit = form.packet.has(Field::N0) && !model.normals.empty();
    const bool anyCorner = drawn.appearance.shading == 'G';  // its normals are turned with it
    for (std::size_t i = 0; i < form.corners(); ++i) {
        const bool normal = lit && (anyCorner || form.packet.has(cornerField(Field::N0, i)));
        if (static_cast<std::uint32_t>(drawn.vertex(i)) >= blocks.vertices ||
            (normal && static_cast<std::uint32_t>(drawn.normal(i)) >= blocks.normals)) {
            return false;
        }
    }
    return true;
}

/// Whether all strips have what their packets need: looks at the materials in their own order, which
/// takes half of the time that the order of the strips takes, and tells as much in most models.
bool allStripsFilled(const Model& model) {
    const Blocks independent(model, false);
    const Blocks shared(model, true);
    const auto filled = [&](const MaterialRecord& material) {
        const PacketForm* form = findPacketForm(material.type);
        if (form == nullptr || !form->strip()) {
            return true;
        }
        const DrawnPolygon drawn = drawnPolygon(model, material);
        return missingInStrip(*form, drawn) == nullptr &&
               indicesInBlocks(model, *form, drawn,
                               material.cno == CoordinateListId::shared ? shared : independent);
    };
    return model.meshes.empty() ||
           std::all_of(model.materials.records.begin(), model.materials.records.end(), filled);
}

/// Whether no number of any polygon or material is one that a packet could not hold, drawn or not:
/// so it is in nearly every model, and costs less to find out than to look at every packet.
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
    // A strip gives its form to materials without texture too, which then have texture 0.
    std::int64_t texture = -1;
    for (const MaterialLine& line : model.materials.lines) {
        const MaterialAppearance look = model.materials.appearance(line);
        texture = std::max(texture, look.textured() ? std::int64_t{look.texture()} : -1);
    }
    return indices <= static_cast<std::uint32_t>(format::largestIndex) &&
           numbers <= static_cast<std::uint32_t>(format::largestColour) &&
           texture < static_cast<std::int64_t>(model.images.size());
}

class PacketCheck {
public:
    explicit PacketCheck(const Model& model) : model_(model) {}

    void polygon(const PacketForm& form, const MaterialRecord& material,
                 const DrawnPolygon& drawn) const {
        checkPacket(form, form.packet, drawn, blocksOf(material.cno));
    }

    void strip(const PacketForm& /*form*/, std::size_t mesh) { mesh_ = mesh; }

    void stripPolygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) const {
        checkFillsStrip(form, drawn);
        checkPacket(form, k == 0 ? form.packet : form.further, drawn,
                    blocksOf(model_.meshes[mesh_].cno));
    }

private:
    [[nodiscard]] Blocks blocksOf(CoordinateListId list) const {
        return {model_, list == CoordinateListId::shared};
    }

    void checkPacket(const PacketForm& form, const PacketWords& words, const DrawnPolygon& drawn,
                     const Blocks& blocks) const {
        const std::int32_t texture = drawn.appearance.texture();
        if (form.textured &&
            (texture < 0 || static_cast<std::size_t>(texture) >= model_.images.size())) {
            refuseMaterial(drawn, "texture " + std::to_string(texture) +
                                      ", which the model does not have");
        }
        for (std::size_t i = 0; i < form.colours; ++i) {
            const Colour colour = packetColour(form, drawn, i);
            checkColour(drawn, colour.r);
            checkColour(drawn, colour.g);
            checkColour(drawn, colour.b);
        }
        for (std::size_t i = 0; i < form.corners(); ++i) {
            if (words.has(cornerField(Field::V0, i))) {
                checkIndex(drawn, "vertex", drawn.vertex(i), blocks.vertices);
            }
            if (words.has(cornerField(Field::N0, i))) {
                checkIndex(drawn, "normal", drawn.normal(i), blocks.normals);
            }
        }
    }

    /// A model without normals may name any.
    void checkIndex(const DrawnPolygon& drawn, const std::string& what, std::int32_t index,
                    std::size_t number) const {
        const auto refuse = [&](const std::string& cause) {
            notCorrectData({model_.description.geo.fileName},
                           "polygon " + std::to_string(drawn.number) + " has the " + what +
                               " index " + std::to_string(index) + cause);
        };
        if (index < 0 || index > format::largestIndex) {
            refuse(", and a packet holds 0 to 65535");
        }
        if (static_cast<std::size_t>(index) >= number && number > 0) {
            refuse(", and its packet can name 0 to " + std::to_string(number - 1));
        }
    }

    void checkColour(const DrawnPolygon& drawn, std::int32_t component) const {
        if (component < 0 || component > format::largestColour) {
            refuseMaterial(drawn, "the colour component " + std::to_string(component) +
                                      ", and a packet holds 0 to 255");
        }
    }

    void checkFillsStrip(const PacketForm& form, const DrawnPolygon& drawn) const {
        if (const char* const missing = missingInStrip(form, drawn)) {
            refuseMesh(drawn, missing);
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
