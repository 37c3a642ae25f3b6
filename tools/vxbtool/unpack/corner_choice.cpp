#include "vxbtool/unpack/corner_choice.h"

#include <algorithm>

#include "format/drawing_code.h"
#include "model/material.h"

namespace vxbtool::unpack {

using mqf2vxb::DrawnPolygon;
using mqf2vxb::Field;
using mqf2vxb::MaterialKind;
using mqf2vxb::PacketPolygon;

/// What the strip makes of a polygon; the drawing code and the last vertex tell whether it is
/// what the packet has.
struct CornerChoice::Turning {
    mqf2vxb::StripVertices strip;
    DrawnPolygon::Corners corners{};
    std::uint32_t vertex = 0;
    std::uint32_t drawing = 0;
};

CornerChoice::CornerChoice(const mqf2vxb::VxbFile& file, const Owners& owners,
                           const PointNumbers& points)
    : file_(file), owners_(owners), points_(points) {
    findHidden();
}

/// The shared vertices that no packet names: the further polygons of strips have hidden corners.
void CornerChoice::findHidden() {
    std::vector<bool> seen(points_.sharedVertices());
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
        vertexIn_.try_emplace(sharedCoordinate(v), v);
        if (v > 0 && sharedCoordinate(v) != sharedCoordinate(0)) {
            elsewhere_ = v;
        }
    }
}

std::uint32_t CornerChoice::sharedCoordinate(std::uint32_t vertex) const {
    return owners_.coordinateOf(points_.independentVertices() + vertex);
}

CornerChoice::Vertices CornerChoice::choose(const mqf2vxb::PacketGroup& group,
                                            const PacketPolygon& packet, const Appearance& look) {
    group_ = &group;
    Vertices own{};
    for (std::size_t i = 0; i < packet.corners(); ++i) {
        own[i] = packet.vertex(i);
    }
    corners_ = {0, 1, 2, 3};
    if (packet.place == 0) {
        if (packet.form->strip()) {
            strip_ = {};
            anchor_ = own[0];
            adopt(tryTurn(own, look, 0));
        }
    } else if (!takeFurther(packet, look, own)) {
        adopt(tryTurn(own, look, 1));
    }
    for (std::uint32_t& vertex : own) {
        vertex = geoVertex(vertex, look.type);
    }
    return own;
}

CornerChoice::Turning CornerChoice::tryTurn(const Vertices& own, const Appearance& look,
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

void CornerChoice::adopt(const Turning& turning) {
    strip_ = turning.strip;
    corners_ = turning.corners;
}

/// Takes two first vertices if the polygon with them makes the packet.
bool CornerChoice::takeVertices(const PacketPolygon& packet, const Appearance& look,
                                std::uint32_t first, std::uint32_t second, Vertices& own) {
    const Vertices candidate{first, second, packet.vertex(2), 0};
    if (!liesRight(candidate, look.type)) {
        return false;
    }
    const Turning turning = tryTurn(candidate, look, packet.place);
    if (turning.vertex != packet.vertex(2) ||
        (packet.form->colours > 0 && turning.drawing != packet[Field::C0] >> 24U)) {
        return false;
    }
    if (keepNormals_ && !normalsLieRight(packet, candidate, turning, look.type)) {
        return false;
    }
    own = candidate;
    adopt(turning);
    return true;
}

/// Whether the corners' normals lie in the coordinates of their vertices, as far as one coordinate is
/// told for each.
bool CornerChoice::normalsLieRight(const PacketPolygon& packet, const Vertices& vertices,
                                   const Turning& turning, std::int32_t type) const {
    for (std::size_t i = 0; i < packet.corners(); ++i) {
        const std::optional<std::uint32_t> coordinate = coordinateOfNormal(packet, i);
        const std::uint32_t vertex = geoVertex(vertices[turning.corners[i]], type);
        if (coordinate && owners_.coordinateOf(vertex) != *coordinate) {
            return false;
        }
    }
    return true;
}

std::optional<std::uint32_t> CornerChoice::coordinateOfNormal(const PacketPolygon& packet,
                                                              std::size_t corner) const {
    const Field field = mqf2vxb::cornerField(Field::N0, corner);
    if (!packet.has(field) || packet[field] >= points_.sharedNormals()) {
        return std::nullopt;
    }
    const std::span<const std::uint32_t> candidates = owners_.candidates(packet[field]);
    return candidates.size() == 1 ? std::optional(candidates.front()) : std::nullopt;
}

/// Finds the vertices of a further polygon. Rather than any others it has those by which its normals
/// come to lie in their coordinates.
bool CornerChoice::takeFurther(const PacketPolygon& packet, const Appearance& look, Vertices& own) {
    const bool named = shared() && look.lit() && look.shading == 'G' && packet.has(Field::N0);
    byNormals_.clear();
    for (std::size_t i = 0; named && i < packet.corners(); ++i) {
        const auto coordinate = coordinateOfNormal(packet, i);
        const auto vertex = coordinate ? vertexIn_.find(*coordinate) : vertexIn_.end();
        if (vertex != vertexIn_.end()) {
            byNormals_.push_back(points_.packetVertex(vertex->second, look.type));
        }
    }
    for (keepNormals_ = named;; keepNormals_ = false) {
        if (takeHidden(packet, look, own) || takeKnown(packet, look, own)) {
            return true;
        }
        if (!keepNormals_) {
            return false;
        }
    }
}

/// Whether the vertices are there, and in one coordinate unless the polygon is shared.
bool CornerChoice::liesRight(const Vertices& vertices, std::int32_t type) const {
    const std::size_t corners = mqf2vxb::vertexCount(type);
    const std::uint32_t total = points_.vertices();
    bool apart = false;
    for (std::size_t i = 0; i < corners; ++i) {
        const std::uint32_t vertex = geoVertex(vertices[i], type);
        if (vertex >= total || (shared() && vertex < points_.independentVertices())) {
            return false;
        }
        apart |= owners_.coordinateOf(vertex) != owners_.coordinateOf(geoVertex(vertices[0], type));
    }
    return apart == shared();
}

/// Gives shared vertices that no packet names a polygon.
bool CornerChoice::takeHidden(const PacketPolygon& packet, const Appearance& look, Vertices& own) {
    if (!shared() || hidden_.empty()) {
        return false;
    }
    const std::uint32_t one = points_.packetVertex(hidden_.back(), look.type);
    if (hidden_.size() > 1) {
        const std::uint32_t two = points_.packetVertex(hidden_[hidden_.size() - 2], look.type);
        if (takeVertices(packet, look, one, two, own)) {
            hidden_.resize(hidden_.size() - 2);
            return true;
        }
    }
    std::vector<std::uint32_t> pool = byNormals_;
    pool.insert(pool.end(),
                {packet.vertex(0), packet.vertex(1), packet.vertex(2),
                 points_.packetVertex(0, look.type), points_.packetVertex(elsewhere_, look.type)});
    for (const std::uint32_t other : pool) {
        if (takeVertices(packet, look, one, other, own) ||
            takeVertices(packet, look, other, one, own)) {
            hidden_.pop_back();
            return true;
        }
    }
    return false;
}

/// Tries the vertices at hand, those of the polygon before first.
bool CornerChoice::takeKnown(const PacketPolygon& packet, const Appearance& look, Vertices& own) {
    if (takeVertices(packet, look, packet.vertex(0), packet.vertex(1), own)) {
        return true;
    }
    std::vector<std::uint32_t> pool = byNormals_;
    pool.insert(pool.end(),
                {packet.vertex(2), shared() ? points_.packetVertex(0, look.type) : anchor_,
                 shared() ? points_.packetVertex(elsewhere_, look.type) : 0, packet.vertex(0),
                 packet.vertex(1), points_.vertices() - 1});
    for (const std::uint32_t first : pool) {
        for (const std::uint32_t second : pool) {
            if (takeVertices(packet, look, first, second, own)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace vxbtool::unpack
