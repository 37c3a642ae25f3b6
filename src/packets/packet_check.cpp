#include "packets/packet_check.h"

#include <array>
#include <string>

#include "driver/diagnostics.h"
#include "output/format.h"
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

class PacketCheck {
public:
    explicit PacketCheck(const Model& model) : model_(model) {}

    void unknown(PrimitiveTypeCode /*type*/) const {}
    void strip(std::uint32_t mesh) { mesh_ = mesh; }

    void polygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) const {
        if (form.strip()) {
            checkFillsStrip(form, drawn);
        }
        if (form.textured &&
            (drawn.appearance.texture < 0 ||
             static_cast<std::size_t>(drawn.appearance.texture) >= model_.images.size())) {
            refuseMaterial(drawn, "texture " + std::to_string(drawn.appearance.texture) +
                                      ", which the model does not have");
        }
        checkColours(form, drawn);
        const PacketWords& words = k == 0 ? form.packet : form.further;
        for (const PacketWord& word : words) {
            checkIndex(word.low, drawn);
            checkIndex(word.high, drawn);
        }
    }

private:
    void checkIndex(Field field, const DrawnPolygon& drawn) const {
        if (field >= Field::V0 && field <= Field::V3) {
            checkFits(drawn, "vertex",
                      drawn.polygon.vertex[static_cast<std::size_t>(field) -
                                           static_cast<std::size_t>(Field::V0)]);
        } else if (field >= Field::N0 && field <= Field::N3) {
            checkFits(drawn, "normal",
                      drawn.polygon.normal[static_cast<std::size_t>(field) -
                                           static_cast<std::size_t>(Field::N0)]);
        }
    }

    void checkFits(const DrawnPolygon& drawn, const char* what, std::int32_t index) const {
        if (index < 0 || index > format::largestIndex) {
            notCorrectData({model_.description.geo.fileName},
                           "polygon " + std::to_string(drawn.number) + " has the " + what +
                               " index " + std::to_string(index) +
                               ", and a packet holds 0 to 65535");
        }
    }

    void checkColours(const PacketForm& form, const DrawnPolygon& drawn) const {
        for (std::size_t i = 0; i < form.colours; ++i) {
            const Colour colour = packetColour(form, drawn, i);
            for (const std::int32_t component : {colour.r, colour.g, colour.b}) {
                if (component < 0 || component > format::largestColour) {
                    refuseMaterial(drawn, "the colour component " + std::to_string(component) +
                                              ", and a packet holds 0 to 255");
                }
            }
        }
    }

    void checkFillsStrip(const PacketForm& form, const DrawnPolygon& drawn) const {
        if (form.textured && !drawn.appearance.textured()) {
            refuseMesh(drawn, "no texture");
        }
        if (form.windowed() && !drawn.appearance.windowed()) {
            refuseMesh(drawn, "no texture window");
        }
        if (!fillsColours(form, drawn)) {
            refuseMesh(drawn, "another number of colours");
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
                           ", unlike the mesh's first polygon");
    }

    const Model& model_;
    std::uint32_t mesh_ = 0;
};

}  // namespace

void checkPackets(const Model& model) { walkPackets(model, PacketCheck(model)); }

}  // namespace mqf2vxb
