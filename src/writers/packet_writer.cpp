#include "writers/packet_writer.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "base/diagnostics.h"
#include "packets/packet_groups.h"
#include "packets/texture_words.h"

namespace mqf2vxb {
namespace {

constexpr std::size_t at(Field field) { return static_cast<std::size_t>(field); }

/// Where the packets end early: the words before are written, then the report is made.
struct Stop {
    std::size_t position;
    bool unknownType;  ///< the polygon's type has no drawing code; else its texture is unsuitable
    std::int32_t polygon;
    std::int32_t type;
};

/// Makes the packets of the whole file in memory, polygon after polygon as the tables hold them,
/// each at its place in its group. A polygon that cannot be written is passed over; the first of
/// these in the order of the file is where the file stops.
class PacketMaker {
public:
    PacketMaker(const Model& model, const OutputLayout& layout)
        : model_(model), words_(layout.vertices.independentTop - layout.independentPrimitiveTop) {
        next_.reserve(layout.groups.size());
        for (const std::uint32_t group : layout.groups) {
            next_.push_back(group - layout.independentPrimitiveTop);
        }
        placements_.reserve(model.images.size());
        for (const ImageRecord& image : model.images) {
            placements_.emplace_back(image);
        }
    }

    void polygon(const PacketForm& form, const MaterialRecord& material,
                 const DrawnPolygon& drawn) {
        std::size_t& next = next_[material.group];
        makePacket(form, form.packet, drawn, next);
        next += form.size();
    }

    void strip(std::size_t mesh) {
        stripNext_ = &next_[model_.meshes[mesh].group];
        words_[(*stripNext_)++] = model_.meshes[mesh].polyNum;
    }

    void stripPolygon(const PacketForm& form, const DrawnPolygon& drawn, std::size_t k) {
        const PacketWords& packet = k == 0 ? form.packet : form.further;
        makePacket(form, packet, drawn, *stripNext_);
        *stripNext_ += form.opening.size() + packet.size();
    }

    void put(OutputWordStream& stream) const {
        const std::span<const std::uint32_t> words(words_);
        stream.putWords(stop_ ? words.first(stop_->position) : words);
        if (stop_ && stop_->unknownType) {
            unknownGeoFlag(stop_->polygon, stop_->type);
        }
        if (stop_) {
            notSuitableTexture();
        }
    }

private:
    void makePacket(const PacketForm& form, const PacketWords& packet, const DrawnPolygon& drawn,
                    std::size_t position) {
        takeIndices(drawn);
        for (const PacketWord word : form.opening) {
            if (word.low == Field::window) {
                fields_[at(Field::window)] = placement(drawn).windowWord(drawn.appearance);
            } else if (word.low == Field::C0 && !takeColours(form, drawn, position)) {
                return;
            }
            words_[position++] = value(word);
        }
        if (form.textured && !takeTexture(form, drawn, position)) {
            return;
        }
        if (form.family == PacketFamily::doubleImage && !takeColours(form, drawn, position)) {
            return;
        }
        for (const PacketWord word : packet) {
            words_[position++] = value(word);
        }
    }

    /// The file stops at `position`, unless it stops before.
    void stopAt(std::size_t position, const DrawnPolygon& drawn, bool unknownType) {
        if (!stop_ || position < stop_->position) {
            stop_ = Stop{position, unknownType, drawn.number, drawn.type};
        }
    }

    void takeIndices(const DrawnPolygon& drawn) {
        for (std::size_t i = 0; i < 4; ++i) {
            fields_[at(Field::V0) + i] = static_cast<std::uint32_t>(drawn.vertex(i));
            fields_[at(Field::N0) + i] = static_cast<std::uint32_t>(drawn.normal(i));
        }
    }

    // Each of these returns false when it is the reason for the file to stop at `position`.

    bool takeColours(const PacketForm& form, const DrawnPolygon& drawn, std::size_t position) {
        const std::int32_t type = drawnType(form, drawn);
        if (!hasDrawingCode(type)) {
            stopAt(position, drawn, true);
            return false;
        }
        const std::uint32_t code = drawingCode(type, drawn) << 24U;
        for (std::size_t i = 0; i < form.colours; ++i) {
            const Colour colour = packetColour(form, drawn, i);
            fields_[at(Field::C0) + i] = static_cast<std::uint32_t>(colour.r) |
                                         static_cast<std::uint32_t>(colour.g) << 8U |
                                         static_cast<std::uint32_t>(colour.b) << 16U | code;
        }
        return true;
    }

    bool takeTexture(const PacketForm& form, const DrawnPolygon& drawn, std::size_t position) {
        const ImagePlacement& image = placement(drawn);
        const auto textures = form.windowed() ? ImagePlacement::windowTextures(drawn)
                                              : image.pageTextures(drawn, form.corners());
        if (!textures) {
            stopAt(position, drawn, false);
            return false;
        }
        for (std::size_t i = 0; i < textures->size(); ++i) {
            fields_[at(Field::T0) + i] = (*textures)[i];
        }
        fields_[at(Field::clut)] = image.clutField();
        fields_[at(Field::page)] = image.pageField(drawn.appearance);
        return true;
    }

    [[nodiscard]] const ImagePlacement& placement(const DrawnPolygon& drawn) const {
        return placements_[static_cast<std::size_t>(drawn.appearance.texture())];
    }

    [[nodiscard]] std::uint32_t value(PacketWord word) const {
        return fields_[at(word.low)] | fields_[at(word.high)] << 16U;
    }

    const Model& model_;
    std::vector<ImagePlacement> placements_;
    std::vector<std::uint32_t> words_;  // the packet section
    std::vector<std::size_t> next_;     // where each group's next packet goes
    std::size_t* stripNext_ = nullptr;  // the same of the strip that is being made
    std::array<std::uint32_t, fieldNum> fields_{};
    std::optional<Stop> stop_;
};

}  // namespace

void writePrimitivePackets(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream) {
    stream.checkPosition(layout.independentPrimitiveTop, "packets");
    PacketMaker maker(model, layout);
    walkDrawn(model, maker);
    maker.put(stream);
}

}  // namespace mqf2vxb
