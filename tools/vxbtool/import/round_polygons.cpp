#include "vxbtool/import/round_polygons.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

namespace vxbtool::importing {
namespace {

WholePoint wholePoint(const Place& place) {
    WholePoint result{place.coordinate, {}};
    for (unsigned axis = 0; axis < 3; ++axis) {
        result.at.at(axis) = static_cast<std::int32_t>(std::lround(place.point[axis]));
    }
    return result;
}

using Whole = std::array<std::int64_t, 3>;

Whole minus(const WholePoint& a, const WholePoint& b) {
    return {std::int64_t{a.at[0]} - b.at[0], std::int64_t{a.at[1]} - b.at[1],
            std::int64_t{a.at[2]} - b.at[2]};
}

/// The direction that a triangle looks into whose corners run clockwise; 0 when it has no area.
Whole front(const WholePoint& a, const WholePoint& b, const WholePoint& c) {
    const Whole u = minus(c, a);
    const Whole v = minus(b, a);
    return {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
}

bool hasArea(const WholePoint& a, const WholePoint& b, const WholePoint& c) {
    if (a == b || b == c || c == a) {
        return false;
    }
    const bool together = a.coordinate == b.coordinate && b.coordinate == c.coordinate;
    return !together || front(a, b, c) != Whole{};
}

/// Adds the triangles of a quadrangle.
void addHalves(const RoundPolygon& whole, std::vector<RoundPolygon>& polygons) {
    RoundPolygon half = whole;
    half.polygon.cornerNum = 3;
    polygons.push_back(half);
    half.points = {whole.points[1], whole.points[3], whole.points[2], whole.points[2]};
    half.polygon.corners = {whole.polygon.corners[1], whole.polygon.corners[3],
                            whole.polygon.corners[2], whole.polygon.corners[2]};
    polygons.push_back(half);
}

/// Turns a piece of a polygon whose first corner another space has than the whole polygon's.
void turnToFront(const Shape& shape, RoundPolygon& rounded) {
    ShapePolygon& polygon = rounded.polygon;
    const bool mirrored = shape.places[polygon.corners[0].place].mirrors;
    if (polygon.mirrored != mirrored) {
        polygon.mirrored = mirrored;
        std::swap(rounded.points[1], rounded.points[2]);
        std::swap(polygon.corners[1], polygon.corners[2]);
    }
}

}  // namespace

bool RoundPolygon::settle() {
    const std::uint32_t coordinate = points[0].coordinate;
    shared = std::ranges::any_of(std::span(points).first(polygon.cornerNum),
                                 [&](const auto& p) { return p.coordinate != coordinate; });
    const bool first = hasArea(points[0], points[1], points[2]);
    if (polygon.cornerNum == 3) {
        return first;
    }
    const bool second = hasArea(points[1], points[3], points[2]);
    if (first && second) {
        return true;
    }
    polygon.cornerNum = 3;
    if (second) {
        points = {points[1], points[3], points[2], points[2]};
        polygon.corners = {polygon.corners[1], polygon.corners[3], polygon.corners[2],
                           polygon.corners[2]};
    }
    return first || second;
}

std::vector<RoundPolygon> roundPolygons(const Shape& shape, bool triangles, Dropped& dropped) {
    std::vector<RoundPolygon> result;
    result.reserve(shape.polygons.size());
    for (const ShapePolygon& polygon : shape.polygons) {
        RoundPolygon rounded{polygon, {}, false};
        for (std::size_t k = 0; k < polygon.cornerNum; ++k) {
            rounded.points[k] = wholePoint(shape.places[polygon.corners[k].place]);
        }
        if (!rounded.settle()) {
            ++dropped.areaLess;
        } else if (triangles && rounded.polygon.cornerNum == 4) {
            addHalves(rounded, result);
        } else {
            result.push_back(rounded);
        }
    }
    for (RoundPolygon& rounded : result) {
        turnToFront(shape, rounded);
    }
    return result;
}

WholePoint wholeNormal(const RoundPolygon& polygon, std::size_t corner) {
    const Vector3f& normal = polygon.polygon.corners.at(corner).normal;
    std::array<double, 3> value{normal[0], normal[1], normal[2]};
    const double length = std::hypot(value[0], value[1], value[2]);
    if (!(length > 0.5)) {
        const Whole own = front(polygon.points[0], polygon.points[1], polygon.points[2]);
        value = {static_cast<double>(own[0]), static_cast<double>(own[1]),
                 static_cast<double>(own[2])};
        const double area = std::hypot(value[0], value[1], value[2]);
        if (area > 0) {
            std::ranges::for_each(value, [&](double& part) { part /= area; });
        } else {
            value = {0, 1, 0};
        }
    }
    constexpr std::int32_t normalOne = 4096;
    WholePoint result{polygon.points.at(corner).coordinate, {}};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        result.at.at(axis) = static_cast<std::int32_t>(std::lround(value.at(axis) * normalOne));
    }
    return result;
}

double largestError(const PlacedCoordinates& placed, const Shape& shape,
                    const std::vector<RoundPolygon>& polygons) {
    double largest = 0;
    for (const RoundPolygon& rounded : polygons) {
        for (std::size_t k = 0; k < rounded.polygon.cornerNum; ++k) {
            const Place& place = shape.places[rounded.polygon.corners.at(k).place];
            const WholePoint whole = wholePoint(place);
            const Vector beside(whole.at[0] - place.point.x, whole.at[1] - place.point.y,
                                whole.at[2] - place.point.z);
            largest =
                std::max(largest, (Matrix3(placed.toModel[place.coordinate]) * beside).Length());
        }
    }
    return largest;
}

}  // namespace vxbtool::importing
