#include "vxbtool/diff/drawn_polygons.h"

#include <algorithm>
#include <span>
#include <utility>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "base/seeded_hash.h"
#include "vxb/word_meaning.h"

namespace vxbtool::diff {
namespace {

using namespace mqf2vxb;

/// Words on their way into a hash.
class Hashed {
public:
    void add(std::uint32_t word) {
        if (size_ < words_.size()) {
            words_[size_++] = word;
        }
    }
    /// A point, or the number that names none.
    void add(const std::optional<Point>& point, std::uint32_t index) {
        if (point) {
            add(static_cast<std::uint16_t>(point->x) |
                std::uint32_t{static_cast<std::uint16_t>(point->y)} << 16U);
        }
        add(point ? static_cast<std::uint16_t>(point->z) : index);
    }
    [[nodiscard]] std::uint64_t hash() const {
        return seededHash(
            {reinterpret_cast<const char*>(words_.data()), size_ * sizeof(std::uint32_t)},
            hashSeed());
    }

private:
    std::array<std::uint32_t, 40> words_{};  // more than any packet has
    std::size_t size_ = 0;
};

std::uint64_t hashOf(std::string_view text) { return seededHash(text, hashSeed()); }

std::uint64_t hashOf(const std::vector<std::uint32_t>& words) {
    return hashOf({reinterpret_cast<const char*>(words.data()), words.size() * sizeof(words[0])});
}

/// A list as long as this is named whole. The name of a longer one stands with each of its polygons,
/// of which there may be many.
constexpr std::size_t mostNamed = 12;

std::string coordinatesName(std::span<const std::uint32_t> coordinates) {
    if (coordinates.empty()) {
        return "no coordinate";
    }
    if (coordinates.size() == 1) {
        return fmt::format("coordinate {}", coordinates.front());
    }
    const auto named = coordinates.first(std::min(coordinates.size(), mostNamed));
    const std::size_t more = coordinates.size() - named.size();
    return fmt::format("coordinates {}{}", fmt::join(named, ", "),
                       more > 0 ? fmt::format(" and {} more", more) : "");
}

}  // namespace

DrawnPolygons::DrawnPolygons(const VxbFile& file, std::vector<bool> mirrors)
    : file_(file), sharedOwners_(file), mirrors_(std::move(mirrors)) {
    nameOwners();
    std::size_t number = 0;
    for (const PacketGroup& group : file.packetGroups) {
        number += group.polygons;
    }
    polygons_.reserve(std::min(number, file.words.size()));
    for (std::uint32_t group = 0; group < file.packetGroups.size(); ++group) {
        forEachPolygon(file, file.packetGroups[group],
                       [&](const PacketPolygon& packet) { add(group, packet); });
    }
}

void DrawnPolygons::nameOwners() {
    const std::vector<std::vector<std::uint32_t>> owners = listingsOfGroups(file_);
    for (std::size_t group = 0; group < owners.size(); ++group) {
        const bool shared = file_.packetGroups[group].shared;
        ownerNames_.push_back(shared ? "shared polygons" : coordinatesName(owners[group]));
        ownerHashes_.push_back(shared ? hashOf(ownerNames_.back()) : hashOf(owners[group]));
    }
}

std::optional<Point> DrawnPolygons::vertex(const DrawnPolygon& polygon, std::uint32_t index) const {
    return packetPoint(file_, file_.vertices, isShared(polygon), index);
}

std::optional<Point> DrawnPolygons::normal(const DrawnPolygon& polygon, std::uint32_t index) const {
    return packetPoint(file_, file_.normals, isShared(polygon), index);
}

std::string DrawnPolygons::formOf(const DrawnPolygon& polygon) const {
    return formName(typeOf(polygon));
}

PrimitiveTypeCode DrawnPolygons::typeOf(const DrawnPolygon& polygon) const {
    return file_.packetGroups[polygon.group].code;
}

namespace {

/// The corners of a triangle in the order of their places, so that it is the same triangle whichever
/// corner comes first; the corners of all else in their own order.
std::array<std::uint8_t, 4> cornerOrder(std::span<const std::uint64_t> places) {
    std::array<std::uint8_t, 4> order{0, 1, 2, 3};
    if (places.size() == 3) {
        std::stable_sort(order.begin(), order.begin() + 3,
                         [&](std::uint8_t a, std::uint8_t b) { return places[a] < places[b]; });
    }
    return order;
}

/// Whether an order runs around a triangle the other way; no way is the other one when two of its
/// corners lie in one place.
bool runsBackwards(const std::array<std::uint8_t, 4>& order,
                   std::span<const std::uint64_t> places) {
    const bool degenerate =
        places[order[0]] == places[order[1]] || places[order[1]] == places[order[2]];
    return !degenerate && (order[0] + 1) % 3 != order[1];
}

}  // namespace

void DrawnPolygons::add(std::uint32_t groupIndex, const PacketPolygon& packet) {
    const PacketGroup& group = file_.packetGroups[groupIndex];
    DrawnPolygon polygon;
    polygon.group = groupIndex;
    polygon.offset = packet.offset;
    polygon.corners = static_cast<std::uint8_t>(vertexCorners(packet));
    std::array<std::uint64_t, 4> places{};
    for (std::uint32_t corner = 0; corner < packet.corners(); ++corner) {
        const std::uint32_t index = packet.vertex(corner);
        polygon.vertices[corner] = index;
        places[corner] = placeOf(polygon, corner);
    }
    const std::span drawn(places.data(), packet.corners());
    if (polygon.corners == packet.corners()) {
        polygon.order = cornerOrder(drawn);
    }

    Hashed points, facing, colours, texels, texture;
    for (std::uint32_t corner = 0; corner < packet.corners(); ++corner) {
        points.add(static_cast<std::uint32_t>(places[polygon.order[corner]]));
        points.add(static_cast<std::uint32_t>(places[polygon.order[corner]] >> 32U));
    }
    if (polygon.corners == 3) {
        polygon.backwards = (runsBackwards(polygon.order, drawn) != packet.runsBackwards()) !=
                            isTurnedByMirrors(polygon);
    }
    facing.add(polygon.backwards ? 1 : 0);
    // A field of each corner is taken in the order of the corners, one for all of them by itself.
    const auto addCorners = [&](Field corner0, auto put) {
        const bool each = packet.has(cornerField(corner0, 1));
        for (std::size_t i = 0; i < packet.corners(); ++i) {
            const std::size_t corner = each ? polygon.order[i] : i;
            if (packet.has(cornerField(corner0, corner))) {
                put(packet[cornerField(corner0, corner)], corner);
            }
        }
    };
    addCorners(Field::N0, [&](std::uint32_t value, std::size_t corner) {
        polygon.normals[corner] = value;
        ++polygon.normalNum;
        facing.add(normal(polygon, value), value);
        facing.add(normalOwner(polygon, value));
    });
    addCorners(Field::C0, [&](std::uint32_t value, std::size_t) { colours.add(value); });
    addCorners(Field::T0, [&](std::uint32_t value, std::size_t) { texels.add(value); });
    for (const Field field : {Field::page, Field::clut, Field::window}) {
        texture.add(packet[field]);
    }
    const std::uint64_t owner = ownerHashes_[groupIndex];
    polygon.form = group.code;
    polygon.where = owner ^ (polygon.form + 1) * 0x9E3779B97F4A7C15U;
    polygon.points = points.hash() ^ owner;
    polygon.facing = facing.hash();
    polygon.colours = colours.hash();
    polygon.texels = texels.hash();
    polygon.texture = texture.hash();
    polygons_.push_back(polygon);
}

std::uint32_t DrawnPolygons::vertexOwner(const DrawnPolygon& polygon, std::uint32_t index) const {
    return isShared(polygon) && index < sharedOwners_.vertices.size()
               ? sharedOwners_.vertices[index].value_or(0)
               : 0;
}

std::uint32_t DrawnPolygons::normalOwner(const DrawnPolygon& polygon, std::uint32_t index) const {
    return isShared(polygon) && index < sharedOwners_.normals.size()
               ? sharedOwners_.normals[index].value_or(0)
               : 0;
}

/// Where some of a shared polygon's coordinates mirror and others do not, its first one tells its front.
bool DrawnPolygons::isTurnedByMirrors(const DrawnPolygon& polygon) const {
    if (!isShared(polygon)) {
        return false;
    }
    const auto mirrors = [&](std::uint32_t corner) {
        const std::uint32_t owner = vertexOwner(polygon, polygon.vertices[corner]);
        return owner < mirrors_.size() && mirrors_[owner];
    };
    const bool first = mirrors(0);
    return first && (!mirrors(1) || !mirrors(2));
}

std::uint64_t DrawnPolygons::placeOf(const DrawnPolygon& polygon, std::uint32_t corner) const {
    constexpr std::uint64_t number = std::uint64_t{1} << 48U;  // a field that is no place
    constexpr std::uint64_t mix = 0x9E3779B97F4A7C15U;
    const std::uint32_t index = polygon.vertices[corner];
    const std::optional<Point> point =
        corner < polygon.corners ? vertex(polygon, index) : std::nullopt;
    if (!point) {
        return number | index;
    }
    const std::uint64_t place = std::uint64_t{static_cast<std::uint16_t>(point->x)} << 32U |
                                std::uint64_t{static_cast<std::uint16_t>(point->y)} << 16U |
                                static_cast<std::uint16_t>(point->z);
    // Shared polygons have each vertex in the space of its own coordinate.
    constexpr unsigned ownerBit = 49;
    const std::uint64_t owner = vertexOwner(polygon, index);
    return owner >> (64U - ownerBit) == 0 ? owner << ownerBit | place : (owner * mix) ^ place;
}

}  // namespace vxbtool::diff
