#include "vxbtool/scene/corners.h"

#include <algorithm>
#include <array>
#include <utility>

#include "vxbtool/shared/quadrangle.h"

namespace vxbtool::scene {
namespace {

using namespace mqf2vxb;

/// The field of a corner, or the first one's when that stands for all.
Field fieldOf(const PacketPolygon& packet, Field corner0, std::size_t corner) {
    const Field own = cornerField(corner0, corner);
    return packet.has(own) ? own : corner0;
}

Vector3 vectorOf(const Point& point, float unit) {
    return {static_cast<float>(point.x) / unit, static_cast<float>(point.y) / unit,
            static_cast<float>(point.z) / unit};
}

}  // namespace

bool CornerReader::complete(const PacketPolygon& packet, bool shared) const {
    for (std::size_t corner = 0; corner < packet.corners(); ++corner) {
        if (!packetPoint(file_, file_.vertices, shared, packet.vertex(corner))) {
            return false;
        }
    }
    return true;
}

const Placement* CornerReader::placementOf(std::optional<std::uint32_t> coordinate,
                                           bool shared) const {
    return shared && coordinate && *coordinate < atRest_.size() ? &atRest_[*coordinate] : nullptr;
}

Vector3 CornerReader::normal(std::uint32_t index, bool shared, const Corner& corner) const {
    constexpr float unit = 4096;
    const auto point = packetPoint(file_, file_.normals, shared, index);
    if (!point) {
        return {};
    }
    Vector3 normal = vectorOf(*point, unit);
    const auto owner = shared ? owners_.normals[index] : std::nullopt;
    if (owner && *owner != corner.coordinate) {
        const Placement* from = placementOf(owner, shared);
        const Placement* to = placementOf(corner.coordinate, shared);
        if (from != nullptr && to != nullptr) {
            normal = normalBefore(matrixOf(*to), transformedNormal(matrixOf(*from), normal));
        }
    }
    return normalised(normal).value_or(Vector3{});
}

Corner CornerReader::corner(const PacketPolygon& packet, std::size_t number, bool shared) const {
    Corner corner;
    const std::uint32_t index = packet.vertex(number);
    corner.place = vectorOf(*packetPoint(file_, file_.vertices, shared, index), 1);
    corner.vertex = index + (shared ? file_.vertices.independent.number : 0);
    if (shared) {
        corner.coordinate = owners_.vertices[index].value_or(0);
    }
    if (const Field field = fieldOf(packet, Field::C0, number); packet.has(field)) {
        for (unsigned i = 0; i < corner.colour.size(); ++i) {
            corner.colour[i] = static_cast<std::uint8_t>(packet[field] >> 8 * i);
        }
    }
    if (const Field field = fieldOf(packet, Field::N0, number); packet.has(field)) {
        corner.normal = normal(packet[field], shared, corner);
    }
    return corner;
}

void CornerReader::finish(const PacketPolygon& packet, std::span<Corner> corners,
                          bool shared) const {
    std::array<Vector3, 4> places{};
    const auto find = [&] {
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const Placement* placement = placementOf(corners[i].coordinate, shared);
            places[i] =
                placement != nullptr ? transformed(*placement, corners[i].place) : corners[i].place;
        }
    };
    find();
    if (corners.size() == 4) {
        std::array<QuadranglePoint, 4> quadrangle{};
        std::transform(places.begin(), places.end(), quadrangle.begin(), [](const Vector3& place) {
            return QuadranglePoint{place[0], place[1], place[2]};
        });
        if (agreementOfHalves(quadrangle) < 0) {
            std::swap(corners[2], corners[3]);
        }
    } else if (packet.runsBackwards()) {
        std::swap(corners[1], corners[2]);
        find();
    }
    if (const Placement* first = placementOf(corners[0].coordinate, shared);
        first != nullptr && mirrors(matrixOf(*first))) {
        std::swap(corners[1], corners[2]);
        find();
    }
    if (!packet.form->lit()) {
        return;
    }
    // The corners run clockwise as seen from the front.
    const Vector3 face = cross(minus(places[2], places[0]), minus(places[1], places[0]));
    for (Corner& corner : corners) {
        if (corner.normal == Vector3{}) {
            const Placement* to = placementOf(corner.coordinate, shared);
            const Vector3 own = to != nullptr ? normalBefore(matrixOf(*to), face) : face;
            corner.normal = normalised(own).value_or(Vector3{0, 0, 1});
        }
    }
}

}  // namespace vxbtool::scene
