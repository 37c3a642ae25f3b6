#include "vxbtool/scene/polygons.h"

#include <algorithm>
#include <map>
#include <span>
#include <utility>

#include <fmt/core.h>

#include "base/key_map.h"
#include "format/texture_fields.h"
#include "vxb/packet_decoder.h"
#include "vxbtool/scene/corners.h"
#include "vxbtool/scene/image_memory.h"
#include "vxbtool/scene/pictures.h"
#include "vxbtool/shared/packet_owners.h"

namespace vxbtool::scene {
namespace {

using namespace mqf2vxb;

/// The middle of a corner's texel in its picture. A window's texels count from its own first one.
std::array<float, 2> texelIn(const Picture& picture, const CornerTexel& texel) {
    constexpr float middle = 0.5F;
    const auto in = [&](std::uint32_t place, std::uint32_t first) {
        return static_cast<float>(place) - (picture.window ? 0 : static_cast<float>(first)) +
               middle;
    };
    return {in(texel.x, picture.x), in(texel.y, picture.y)};
}

class PolygonReader {
public:
    PolygonReader(const VxbFile& file, Scene& scene)
        : file_(file),
          scene_(scene),
          memory_(file, scene.warnings),
          pictures_(memory_),
          corners_(file, scene) {}

    void read() {
        scene_.imagePlaces = memory_.places();
        for (const PacketGroup& group : file_.packetGroups) {
            countDrawn(group);
        }
        scene_.pictures = pictures_.make(file_.words.size(), scene_.warnings);
        scene_.polygons.reserve(drawn_);
        scene_.corners.reserve(drawnCorners_);
        for (auto& [body, groups] : groupsOfBodies()) {
            body.firstPolygon = static_cast<std::uint32_t>(scene_.polygons.size());
            for (const std::uint32_t group : groups) {
                addGroup(group);
            }
            body.polygonNum =
                static_cast<std::uint32_t>(scene_.polygons.size()) - body.firstPolygon;
            if (body.polygonNum > 0) {
                scene_.bodies.push_back(std::move(body));
            }
        }
        warn();
    }

private:
    using Groups = std::vector<std::uint32_t>;

    /// Bodies in the order of their first groups, with the groups of each.
    [[nodiscard]] std::vector<std::pair<Body, Groups>> groupsOfBodies() const {
        std::vector<std::pair<Body, Groups>> bodies;
        std::map<std::pair<bool, std::vector<std::uint32_t>>, std::size_t> indexOf;
        auto owners = ownersOfGroups(file_);
        for (std::uint32_t group = 0; group < owners.size(); ++group) {
            // Without coordinates there is nothing to move with.
            const bool shared = file_.packetGroups[group].shared && !scene_.coordinates.empty();
            const auto [place, isNew] = indexOf.try_emplace({shared, owners[group]}, bodies.size());
            if (isNew) {
                Body body;
                body.coordinates = std::move(owners[group]);
                body.shared = shared;
                bodies.emplace_back(std::move(body), Groups());
            }
            bodies[place->second].second.push_back(group);
        }
        return bodies;
    }

    [[nodiscard]] static bool isFace(const PacketPolygon& packet) {
        return vertexCorners(packet) == packet.corners();
    }

    void countDrawn(const PacketGroup& group) {
        forEachPolygon(file_, group, [&](const PacketPolygon& packet) {
            if (!isFace(packet)) {
                ++lines_;
            } else if (!corners_.complete(packet, group.shared)) {
                ++incomplete_;
            } else {
                ++drawn_;
                drawnCorners_ += packet.corners();
                if (packet.form->textured) {
                    pictures_.use(packet, packet.corners());
                }
            }
        });
    }

    void addGroup(std::uint32_t index) {
        const PacketGroup& group = file_.packetGroups[index];
        forEachPolygon(file_, group, [&](const PacketPolygon& packet) {
            if (!isFace(packet) || !corners_.complete(packet, group.shared)) {
                return;
            }
            Polygon polygon;
            polygon.look = lookOf(group.code, packet);
            polygon.firstCorner = static_cast<std::uint32_t>(scene_.corners.size());
            polygon.cornerNum = static_cast<std::uint32_t>(packet.corners());
            polygon.group = index;
            polygon.offset = packet.offset;
            scene_.polygons.push_back(polygon);
            for (std::size_t i = 0; i < packet.corners(); ++i) {
                scene_.corners.push_back(corners_.corner(packet, i, group.shared));
                if (const auto picture = scene_.looks[polygon.look].picture) {
                    scene_.corners.back().texel =
                        texelIn(scene_.pictures[*picture], cornerTexel(packet, i));
                }
            }
            corners_.finish(packet, std::span(scene_.corners).subspan(polygon.firstCorner),
                            group.shared);
        });
    }

    [[nodiscard]] std::uint32_t lookOf(PrimitiveTypeCode code, const PacketPolygon& packet) {
        Look look;
        look.type = code & ~type_code::shared;
        look.lit = packet.form->lit();
        look.smooth = look.lit && (code & type_code::smooth) != 0;
        if (packet.form->textured) {
            look.picture = pictures_.find(packet);
            look.pageFlags = texturePage(packet[Field::page]).flagBits;
            look.repeats = packet.has(Field::window);
        }
        if ((code & type_code::flag04) != 0) {
            look.blend =
                static_cast<Blend>(static_cast<std::uint32_t>(Blend::half) + look.pageFlags);
        }
        constexpr unsigned flagsShift = 24;  // a type code has fewer bits
        constexpr unsigned pictureShift = 32;
        const std::uint64_t picture = look.picture ? std::uint64_t{*look.picture} + 1 : 0;
        const std::uint64_t key =
            look.type | look.pageFlags << flagsShift | picture << pictureShift;
        return looks_.find(key, [&] {
            scene_.looks.push_back(look);
            return static_cast<std::uint32_t>(scene_.looks.size() - 1);
        });
    }

    void warn() {
        const auto add = [&](std::size_t number, const char* what) {
            if (number > 0) {
                scene_.warnings.push_back(fmt::format("{} {}", number, what));
            }
        };
        add(lines_, "lines and sprites of strips are not drawn");
        add(incomplete_, "polygons are not drawn, because the file lacks vertices of theirs");
        add(static_cast<std::size_t>(std::ranges::count_if(
                file_.packetGroups,
                [](const PacketGroup& group) { return group.form == nullptr; })),
            "groups of packets are not drawn, because their type code has no form");
    }

    const VxbFile& file_;
    Scene& scene_;
    ImageMemory memory_;
    Pictures pictures_;
    CornerReader corners_;
    KeyMap<std::uint64_t, std::uint32_t> looks_;
    std::size_t drawn_ = 0;
    std::size_t drawnCorners_ = 0;
    std::size_t lines_ = 0;
    std::size_t incomplete_ = 0;
};

}  // namespace

void readPolygons(const VxbFile& file, Scene& scene) { PolygonReader(file, scene).read(); }

}  // namespace vxbtool::scene
