#include "vxbtool/unpack/polygons.h"

#include <algorithm>
#include <array>
#include <optional>

#include "format/drawing_code.h"
#include "format/texture_fields.h"
#include "model/material.h"
#include "packets/drawn_polygon.h"
#include "vxb/packet_decoder.h"
#include "vxbtool/unpack/look_table.h"
#include "vxbtool/unpack/packet_polygon_kind.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::cornerField;
using mqf2vxb::DrawnPolygon;
using mqf2vxb::Field;
using mqf2vxb::MaterialKind;
using mqf2vxb::PacketFamily;
using mqf2vxb::PacketForm;
using mqf2vxb::PacketPolygon;
using mqf2vxb::VxbFile;
using Corners = DrawnPolygon::Corners;

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

/// A polygon's letters, flag and shape, before its numbers.
struct Appearance {
    std::uint32_t flag = 0;
    char shading = 'F';
    char kind = 'C';
    std::int32_t type = polygon_type::triangle;
};

/// Turns the packets of one file into polygons.
class Unpacker {
public:
    Unpacker(const VxbFile& file, const Owners& owners, const FoundTextures& textures)
        : file_(file),
          owners_(owners),
          textures_(textures),
          looks_(result_.materials),
          independentVertices_(file.vertices.independent.number),
          independentNormals_(file.normals.independent.number),
          sharedVertices_(file.vertices.shared.number),
          sharedNormals_(file.normals.shared.number) {}

    UnpackedPolygons unpack() {
        for (const mqf2vxb::PacketGroup& group : file_.packetGroups) {
            result_.hasStrips |= group.form != nullptr && group.form->strip();
            anyShared_ |= group.shared;
        }
        result_.noNormal = anyShared_ ? normals() : 0;
        findHidden();
        for (const mqf2vxb::PacketGroup& group : file_.packetGroups) {
            PolygonGroup added;
            added.first = static_cast<std::uint32_t>(result_.polygons.size());
            added.shared = group.shared;
            added.strips = group.form != nullptr && group.form->strip();
            group_ = &group;
            mqf2vxb::forEachPolygon(file_, group,
                                    [&](const PacketPolygon& polygon) { addPolygon(polygon); });
            added.end = static_cast<std::uint32_t>(result_.polygons.size());
            result_.groups.push_back(added);
        }
        if (!result_.hasStrips) {
            result_.meshes = {};
        }
        return std::move(result_);
    }

private:
    [[nodiscard]] std::uint32_t normals() const { return independentNormals_ + sharedNormals_; }
    [[nodiscard]] bool shared() const { return group_->shared; }

    /// The shared vertices that no packet names: the further polygons of strips have hidden corners.
    void findHidden() {
        std::vector<bool> seen(sharedVertices_);
        bool strips = false;
        for (const mqf2vxb::PacketGroup& group : file_.packetGroups) {
            if (!group.shared || group.form == nullptr) {
                continue;
            }
            strips |= group.form->strip();
            mqf2vxb::forEachPolygon(file_, group, [&](const PacketPolygon& polygon) {
                for (std::size_t i = polygon.place > 0 ? 2 : 0; i < polygon.corners(); ++i) {
                    if (polygon.vertex(i) < seen.size()) {
                        seen[polygon.vertex(i)] = true;
                    }
                }
            });
        }
        for (std::uint32_t v = 0; v < seen.size(); ++v) {
            if (strips && !seen[v]) {
                hidden_.push_back(v);
            }
            if (v > 0 && sharedCoordinate(v) != sharedCoordinate(0)) {
                elsewhere_ = v;
            }
        }
    }

    [[nodiscard]] std::uint32_t sharedCoordinate(std::uint32_t vertex) const {
        return owners_.coordinateOf(independentVertices_ + vertex);
    }

    /// The number of a packet's vertex in the GEO file. The gathering renumbers no lines.
    [[nodiscard]] std::uint32_t geoVertex(std::uint32_t vertex, std::int32_t type) const {
        return shared() && type < polygon_type::line && vertex < sharedVertices_
                   ? independentVertices_ + vertex
                   : vertex;
    }
    [[nodiscard]] std::uint32_t geoNormal(std::uint32_t normal, std::int32_t type) const {
        return shared() && type < polygon_type::line && normal < sharedNormals_
                   ? independentNormals_ + normal
                   : normal;
    }
    /// Whether a lit polygon may name this normal of its packet.
    [[nodiscard]] bool isNormal(std::uint32_t normal) const {
        return normals() == 0 || normal < (shared() ? sharedNormals_ : normals());
    }

    [[nodiscard]] bool colourIsUnchanged(const PacketPolygon& polygon) const {
        for (std::size_t i = 0; i < polygon.form->colours; ++i) {
            if ((polygon[cornerField(Field::C0, i)] & colourMask) != unchangedColour) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] Appearance appearanceOf(const PacketPolygon& polygon) const {
        const PacketForm& form = *polygon.form;
        const mqf2vxb::PrimitiveTypeCode code = group_->code;
        const bool further = polygon.place > 0;
        const bool coded = form.colours > 0;
        const std::uint32_t drawing = polygon[Field::C0] >> 24U;
        Appearance look;
        look.type = polygonTypeOf(file_, polygon, shared());

        const auto set = [&](std::uint32_t flag, bool when) { look.flag |= when ? flag : 0; };
        bool unlit = !form.lit();
        set(material_flag::bit02, (code & type_code::flag02) != 0);
        set(material_flag::bit04, further && coded ? (drawing & drawing_code::flag04) != 0
                                                   : (code & type_code::flag04) != 0);
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
            const bool smoothNormals = isNormal(polygon[Field::N0]) &&
                                       isNormal(polygon[Field::N1]) && isNormal(polygon[Field::N2]);
            if (form.lit()) {
                if (colours == 1) {
                    look.shading = perCorner ? 'G' : 'F';
                } else if (!smoothNormals) {
                    look.shading = 'F';
                }
                unlit = look.shading == 'F' && !isNormal(polygon[Field::N0]);
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

    void addPolygon(const PacketPolygon& packet) {
        const Appearance look = appearanceOf(packet);
        const std::array<std::uint32_t, 4> vertices = chooseVertices(packet, look);
        addToMesh(packet);

        const auto number = static_cast<std::uint32_t>(result_.polygons.size());
        model_text::Polygon polygon;
        polygon.shape = static_cast<model_text::PolygonShape>(look.type);
        polygon.vertices = vertices;
        takeNormals(packet, look, polygon);
        result_.polygons.push_back(polygon);
        result_.materials.uses.push_back({number, lookOf(packet, look)});
    }

    void addToMesh(const PacketPolygon& packet) {
        if (!result_.hasStrips) {
            return;
        }
        model_text::Meshes& meshes = result_.meshes;
        meshes.polygons.push_back(static_cast<std::uint32_t>(result_.polygons.size()));
        if (packet.place == 0) {
            meshes.ends.push_back(0);
        }
        meshes.ends.back() = meshes.polygons.size();
    }

    /// Fills corners_, the polygon's own corner for each of the packet's, and returns the vertices
    /// of the GEO file. A strip's further polygon carries one vertex: the others are chosen so that
    /// the strip turns the polygon to it, and that the polygon is shared or not as the packet says.
    std::array<std::uint32_t, 4> chooseVertices(const PacketPolygon& packet,
                                                const Appearance& look) {
        std::array<std::uint32_t, 4> own{};
        for (std::size_t i = 0; i < packet.corners(); ++i) {
            own[i] = packet.vertex(i);
        }
        corners_ = {0, 1, 2, 3};
        if (packet.place == 0) {
            if (packet.form->strip()) {
                strip_ = {};
                anchor_ = own[0];
                turn(own, look, 0);
            }
        } else if (!takeHidden(packet, look, own) && !takeKnown(packet, look, own)) {
            turn(own, look, 1);
        }
        for (std::uint32_t& vertex : own) {
            vertex = geoVertex(vertex, look.type);
        }
        return own;
    }

    /// What the strip makes of a polygon; the drawing code and the last vertex tell whether it is
    /// what the packet has.
    struct Turning {
        mqf2vxb::StripVertices strip;
        Corners corners{};
        std::uint32_t vertex = 0;
        std::uint32_t drawing = 0;
    };
    [[nodiscard]] Turning tryTurn(const std::array<std::uint32_t, 4>& own, const Appearance& look,
                                  std::size_t place) const {
        static constexpr std::array<std::int32_t, MaterialKind::mostNumbers> numbers{};
        mqf2vxb::PolygonRecord record;
        record.type = look.type;
        std::copy(own.begin(), own.end(), record.vertex.begin());
        const mqf2vxb::MaterialLine line{look.flag, look.shading, look.kind, 0};
        DrawnPolygon drawn({}, {line, numbers.data()}, record);
        Turning result{strip_, {}, 0, 0};
        result.strip.follow(drawn, place);
        result.corners = drawn.corners();
        result.vertex = static_cast<std::uint32_t>(drawn.vertex(2));
        result.drawing = mqf2vxb::drawingCode(mqf2vxb::drawnType(*group_->form, drawn), drawn);
        return result;
    }
    void adopt(const Turning& turning) {
        strip_ = turning.strip;
        corners_ = turning.corners;
    }
    void turn(const std::array<std::uint32_t, 4>& own, const Appearance& look, std::size_t place) {
        adopt(tryTurn(own, look, place));
    }

    /// Takes two first vertices if the polygon with them makes the packet.
    bool takeVertices(const PacketPolygon& packet, const Appearance& look, std::uint32_t first,
                      std::uint32_t second, std::array<std::uint32_t, 4>& own) {
        const std::array<std::uint32_t, 4> candidate{first, second, packet.vertex(2), 0};
        if (!liesRight(candidate, look.type)) {
            return false;
        }
        const Turning turning = tryTurn(candidate, look, packet.place);
        if (turning.vertex != packet.vertex(2) ||
            (packet.form->colours > 0 && turning.drawing != packet[Field::C0] >> 24U)) {
            return false;
        }
        own = candidate;
        adopt(turning);
        return true;
    }

    /// Whether the vertices are there, and in one coordinate unless the polygon is shared.
    [[nodiscard]] bool liesRight(const std::array<std::uint32_t, 4>& vertices,
                                 std::int32_t type) const {
        const std::size_t corners = mqf2vxb::vertexCount(type);
        const std::uint32_t total = independentVertices_ + sharedVertices_;
        bool apart = false;
        for (std::size_t i = 0; i < corners; ++i) {
            const std::uint32_t vertex = geoVertex(vertices[i], type);
            if (vertex >= total || (shared() && vertex < independentVertices_)) {
                return false;
            }
            apart |=
                owners_.coordinateOf(vertex) != owners_.coordinateOf(geoVertex(vertices[0], type));
        }
        return apart == shared();
    }

    /// Gives shared vertices that no packet names a polygon.
    bool takeHidden(const PacketPolygon& packet, const Appearance& look,
                    std::array<std::uint32_t, 4>& own) {
        if (!shared() || hidden_.empty()) {
            return false;
        }
        const std::uint32_t one = lineVertex(hidden_.back(), look.type);
        if (hidden_.size() > 1) {
            const std::uint32_t two = lineVertex(hidden_[hidden_.size() - 2], look.type);
            if (takeVertices(packet, look, one, two, own)) {
                hidden_.resize(hidden_.size() - 2);
                return true;
            }
        }
        for (const std::uint32_t other :
             {packet.vertex(0), packet.vertex(1), packet.vertex(2), lineVertex(0, look.type),
              lineVertex(elsewhere_, look.type)}) {
            if (takeVertices(packet, look, one, other, own) ||
                takeVertices(packet, look, other, one, own)) {
                hidden_.pop_back();
                return true;
            }
        }
        return false;
    }
    /// A vertex of the shared block as a polygon of this type names it in a packet.
    [[nodiscard]] std::uint32_t lineVertex(std::uint32_t vertex, std::int32_t type) const {
        return type < polygon_type::line ? vertex : independentVertices_ + vertex;
    }

    /// Tries the vertices at hand, those of the polygon before first.
    bool takeKnown(const PacketPolygon& packet, const Appearance& look,
                   std::array<std::uint32_t, 4>& own) {
        if (takeVertices(packet, look, packet.vertex(0), packet.vertex(1), own)) {
            return true;
        }
        const std::array<std::uint32_t, 6> pool{packet.vertex(2),
                                                shared() ? lineVertex(0, look.type) : anchor_,
                                                shared() ? lineVertex(elsewhere_, look.type) : 0,
                                                packet.vertex(0),
                                                packet.vertex(1),
                                                independentVertices_ + sharedVertices_ - 1};
        for (const std::uint32_t first : pool) {
            for (const std::uint32_t second : pool) {
                if (takeVertices(packet, look, first, second, own)) {
                    return true;
                }
            }
        }
        return false;
    }

    void takeNormals(const PacketPolygon& packet, const Appearance& look,
                     model_text::Polygon& polygon) const {
        const bool lit = (look.flag & material_flag::unlit) == 0;
        if (!packet.has(Field::N0)) {
            polygon.normals.fill(lit ? 0 : result_.noNormal);
            return;
        }
        polygon.normals.fill(geoNormal(packet[Field::N0], look.type));
        for (std::size_t i = 0; i < packet.corners(); ++i) {
            const Field field = cornerField(Field::N0, i);
            if (packet.has(field)) {
                polygon.normals[look.shading == 'G' ? corners_[i] : i] =
                    geoNormal(packet[field], look.type);
            }
        }
    }

    std::uint32_t lookOf(const PacketPolygon& packet, const Appearance& look) {
        std::array<std::int32_t, MaterialKind::mostNumbers> numbers{};
        const MaterialKind kind = mqf2vxb::materialKind(look.kind);
        if (packet.form->textured) {
            putTexture(packet, kind, numbers);
        }
        for (std::size_t i = 0;
             i < std::max<std::size_t>(kind.colours > 0 ? 1 : 0, packet.form->colours) &&
             i < kind.colours;
             ++i) {
            const std::uint32_t colour =
                packet.form->colours > i ? packet[cornerField(Field::C0, i)] : 0;
            const std::size_t corner = kind.colours > 1 ? corners_[i] : 0;
            for (unsigned k = 0; k < MaterialKind::colourNumbers; ++k) {
                numbers[kind.colourStart() + MaterialKind::colourNumbers * corner + k] =
                    static_cast<std::int32_t>(colour >> 8 * k & 0xFFU);
            }
        }
        return looks_.find(look.flag, look.shading, look.kind,
                           std::span(numbers).first(kind.numbers()));
    }

    void putTexture(const PacketPolygon& packet, const MaterialKind& kind,
                    std::array<std::int32_t, MaterialKind::mostNumbers>& numbers) const {
        constexpr std::int32_t pageSize = 256;
        std::array<std::uint32_t, 4> texels{};
        const std::size_t corners = packet.corners();
        for (std::size_t i = 0; i < corners; ++i) {
            texels[i] = packet[cornerField(Field::T0, i)];
        }
        const FoundTextures::Place place = textures_.find(packet[Field::page], packet[Field::clut],
                                                          std::span(texels).first(corners));
        numbers[0] = static_cast<std::int32_t>(place.number);
        if (kind.windowed) {
            const mqf2vxb::TextureWindow window = mqf2vxb::textureWindow(packet[Field::window]);
            const std::array<std::uint32_t, MaterialKind::windowNumbers> words{
                window.width, window.height, (window.x - place.u) & 0xFFU,
                (window.y - place.v) & 0xFFU};
            std::copy(words.begin(), words.end(), numbers.begin() + MaterialKind::windowStart);
        }
        // Texels in front of the image lie on the page behind it, if those of all corners do.
        const auto put = [&](std::size_t axis, unsigned shift, std::uint32_t start) {
            bool allBefore = true;
            for (std::size_t i = 0; i < corners; ++i) {
                allBefore = allBefore && (texels[i] >> shift & 0xFFU) < start;
            }
            for (std::size_t i = 0; i < corners; ++i) {
                const auto texel = static_cast<std::int32_t>(texels[i] >> shift & 0xFFU);
                numbers[kind.cornerStart() + 2 * corners_[i] + axis] =
                    texel - static_cast<std::int32_t>(start) + (allBefore ? pageSize : 0);
            }
        };
        put(0, 0, kind.windowed ? 0 : place.u);
        put(1, 8, kind.windowed ? 0 : place.v);
    }

    const VxbFile& file_;
    const Owners& owners_;
    const FoundTextures& textures_;
    UnpackedPolygons result_;
    LookTable looks_;
    std::uint32_t independentVertices_;
    std::uint32_t independentNormals_;
    std::uint32_t sharedVertices_;
    std::uint32_t sharedNormals_;
    bool anyShared_ = false;
    std::vector<std::uint32_t> hidden_;  // shared vertices that no packet names
    std::uint32_t elsewhere_ = 0;        // a shared vertex of another coordinate than the first
    const mqf2vxb::PacketGroup* group_ = nullptr;
    mqf2vxb::StripVertices strip_;
    std::uint32_t anchor_ = 0;  // the first vertex of the strip
    Corners corners_{0, 1, 2, 3};
};

}  // namespace

UnpackedPolygons unpackPolygons(const VxbFile& file, const Owners& owners,
                                const FoundTextures& textures) {
    return Unpacker(file, owners, textures).unpack();
}

}  // namespace vxbtool::unpack
