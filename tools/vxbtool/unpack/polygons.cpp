#include "vxbtool/unpack/polygons.h"

#include <algorithm>
#include <array>

#include "format/texture_fields.h"
#include "model/material.h"
#include "vxb/packet_decoder.h"
#include "vxbtool/unpack/appearance.h"
#include "vxbtool/unpack/corner_choice.h"
#include "vxbtool/unpack/look_table.h"
#include "vxbtool/unpack/point_numbers.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::cornerField;
using mqf2vxb::Field;
using mqf2vxb::MaterialKind;
using mqf2vxb::PacketPolygon;
using mqf2vxb::VxbFile;

/// Turns the packets of one file into polygons.
class Unpacker {
public:
    Unpacker(const VxbFile& file, const Owners& owners, const FoundTextures& textures)
        : file_(file),
          textures_(textures),
          looks_(result_.materials),
          points_(file),
          corners_(file, owners, points_) {}

    UnpackedPolygons unpack() {
        bool anyShared = false;
        for (const mqf2vxb::PacketGroup& group : file_.packetGroups) {
            result_.hasStrips |= group.form != nullptr && group.form->strip();
            anyShared |= group.shared;
        }
        result_.noNormal = anyShared ? points_.normals() : 0;
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
    void addPolygon(const PacketPolygon& packet) {
        const Appearance look = appearanceOf(file_, *group_, packet, points_);
        addToMesh(packet);

        const auto number = static_cast<std::uint32_t>(result_.polygons.size());
        model_text::Polygon polygon;
        polygon.shape = static_cast<model_text::PolygonShape>(look.type);
        polygon.vertices = corners_.choose(*group_, packet, look);
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

    void takeNormals(const PacketPolygon& packet, const Appearance& look,
                     model_text::Polygon& polygon) const {
        if (!packet.has(Field::N0)) {
            polygon.normals.fill(look.lit() ? 0 : result_.noNormal);
            return;
        }
        polygon.normals.fill(points_.geoNormal(packet[Field::N0], group_->shared, look.type));
        for (std::size_t i = 0; i < packet.corners(); ++i) {
            const Field field = cornerField(Field::N0, i);
            if (packet.has(field)) {
                polygon.normals[look.shading == 'G' ? corners_.corners()[i] : i] =
                    points_.geoNormal(packet[field], group_->shared, look.type);
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
            const std::size_t corner = kind.colours > 1 ? corners_.corners()[i] : 0;
            for (unsigned k = 0; k < MaterialKind::colourNumbers; ++k) {
                numbers[kind.colourStart() + MaterialKind::colourNumbers * corner + k] =
                    static_cast<std::int32_t>(colour >> 8U * k & 0xFFU);
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
                numbers[kind.cornerStart() + 2 * corners_.corners()[i] + axis] =
                    texel - static_cast<std::int32_t>(start) + (allBefore ? pageSize : 0);
            }
        };
        put(0, 0, kind.windowed ? 0 : place.u);
        put(1, 8, kind.windowed ? 0 : place.v);
    }

    const VxbFile& file_;
    const FoundTextures& textures_;
    UnpackedPolygons result_;
    LookTable looks_;
    PointNumbers points_;
    CornerChoice corners_;
    const mqf2vxb::PacketGroup* group_ = nullptr;
};

}  // namespace

UnpackedPolygons unpackPolygons(const VxbFile& file, const Owners& owners,
                                const FoundTextures& textures) {
    return Unpacker(file, owners, textures).unpack();
}

}  // namespace vxbtool::unpack
