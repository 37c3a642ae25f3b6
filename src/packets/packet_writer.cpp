#include "packets/packet_writer.h"

#include <array>
#include <vector>

#include "driver/diagnostics.h"
#include "packets/packet_groups.h"
#include "packets/texture_words.h"

namespace mqf2vxb {
namespace {

constexpr std::size_t at(Field field) { return static_cast<std::size_t>(field); }

class PacketWriter {
public:
    PacketWriter(const Model& model, OutputWordStream& stream) : model_(model), stream_(stream) {
        placements_.reserve(model.images.size());
        for (const ImageRecord& image : model.images) {
            placements_.emplace_back(image);
        }
    }

    [[noreturn]] void unknown(PrimitiveTypeCode type) const { typeMismatch("primb", type); }

    void strip(std::uint32_t mesh) {
        stream_.putWord(static_cast<std::uint32_t>(model_.meshes[mesh].poly.size()));
    }

    void polygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) {
        takeIndices(drawn);
        for (const PacketWord word : form.opening) {
            takeOpening(word.low, form, drawn);
            putWord(word);
        }
        if (form.textured) {
            takeTexture(form, drawn);
        }
        if (form.family == PacketFamily::doubleImage) {
            takeColours(form, drawn);
        }
        putPacket(k == 0 ? form.packet : form.further);
    }

private:
    void takeIndices(const DrawnPolygon& drawn) {
        for (std::size_t i = 0; i < drawn.polygon.vertex.size(); ++i) {
            fields_[at(Field::V0) + i] = static_cast<std::uint32_t>(drawn.polygon.vertex[i]);
            fields_[at(Field::N0) + i] = static_cast<std::uint32_t>(drawn.polygon.normal[i]);
        }
    }

    /// The value of an opening word. Each is put before the next is made, since making a colour
    /// word may end the run.
    void takeOpening(Field field, const PacketForm& form, const DrawnPolygon& drawn) {
        if (field == Field::window) {
            fields_[at(field)] = placement(drawn).windowWord(drawn.appearance);
        } else if (field == Field::C0) {
            takeColours(form, drawn);
        }
    }

    void takeColours(const PacketForm& form, const DrawnPolygon& drawn) {
        const std::uint32_t code = drawingCode(drawnType(form, drawn), drawn) << 24U;
        for (std::size_t i = 0; i < form.colours; ++i) {
            const Colour colour = packetColour(form, drawn, i);
            fields_[at(Field::C0) + i] = static_cast<std::uint32_t>(colour.r) |
                                         static_cast<std::uint32_t>(colour.g) << 8U |
                                         static_cast<std::uint32_t>(colour.b) << 16U | code;
        }
    }

    void takeTexture(const PacketForm& form, const DrawnPolygon& drawn) {
        const ImagePlacement& image = placement(drawn);
        const ImagePlacement::TextureFields textures =
            form.windowed() ? ImagePlacement::windowTextures(drawn)
                            : image.pageTextures(drawn, form.corners());
        for (std::size_t i = 0; i < textures.size(); ++i) {
            fields_[at(Field::T0) + i] = textures[i];
        }
        fields_[at(Field::clut)] = image.clutField();
        fields_[at(Field::page)] = image.pageField(drawn.appearance);
    }

    [[nodiscard]] const ImagePlacement& placement(const DrawnPolygon& drawn) const {
        return placements_[static_cast<std::size_t>(drawn.appearance.texture)];
    }

    [[nodiscard]] std::uint32_t value(PacketWord word) const {
        return fields_[at(word.low)] | fields_[at(word.high)] << 16U;
    }
    void putWord(PacketWord word) { stream_.putWord(value(word)); }

    void putPacket(const PacketWords& words) {
        std::array<std::uint32_t, PacketWords::most> values;
        for (std::size_t i = 0; i < words.size(); ++i) {
            values[i] = value(words[i]);
        }
        stream_.putWords({values.data(), words.size()});
    }

    const Model& model_;
    OutputWordStream& stream_;
    std::vector<ImagePlacement> placements_;
    std::array<std::uint32_t, fieldNum> fields_{};
};

}  // namespace

void writePrimitivePackets(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream) {
    stream.checkPosition(layout.independentPrimitiveTop, "packets");
    walkPackets(model, PacketWriter(model, stream));
}

}  // namespace mqf2vxb
