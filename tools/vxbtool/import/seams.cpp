#include "vxbtool/import/seams.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <tuple>
#include <utility>

#include "vxbtool/import/source.h"
#include "vxbtool/import/texture_coordinates.h"

namespace vxbtool::importing {
namespace {

/// The most pieces of one polygon.
constexpr double mostPieces = 256;
/// And of all: each has a vertex of its own, and packets can name 65536.
constexpr double mostPiecesTogether = 4 * 65536;

using Ring = std::vector<ShapeCorner>;

class SeamCutter {
public:
    SeamCutter(const PlacedCoordinates& placed, Shape& shape) : placed_(placed), shape_(shape) {}

    /// The polygon's pieces, each of which lies between 0 and `reach` of both texture coordinates.
    void cut(const ShapePolygon& polygon, const std::array<float, 2>& reach,
             std::vector<ShapePolygon>& pieces) {
        const Ring ring = ringOf(polygon);
        for (const Ring& strip : slices(ring, 0, reach[0])) {
            for (const Ring& piece : slices(strip, 1, reach[1])) {
                add(polygon, piece, pieces);
            }
        }
    }

    /// The polygon's pieces inside and outside of its picture, in the directions in which that is
    /// clamped.
    void cutAtEdges(const ShapePolygon& polygon, const std::array<bool, 2>& clamped,
                    std::vector<ShapePolygon>& pieces) {
        std::vector<Ring> rings{ringOf(polygon)};
        for (std::size_t axis = 0; axis < clamped.size(); ++axis) {
            for (const float edge : {0.0F, 1.0F}) {
                std::vector<Ring> cut;
                for (Ring& ring : rings) {
                    if (clamped.at(axis) && liesOnBothSides(ring, axis, edge)) {
                        cut.push_back(half(ring, axis, edge, true));
                        cut.push_back(half(ring, axis, edge, false));
                    } else {
                        cut.push_back(std::move(ring));
                    }
                }
                rings = std::move(cut);
            }
        }
        for (const Ring& ring : rings) {
            add(polygon, ring, pieces);
        }
    }

    static bool liesOnBothSides(std::span<const ShapeCorner> corners, std::size_t axis,
                                float edge) {
        // So much less or more cannot be seen.
        constexpr float noticeable = 1.0F / 64;
        float least = edge;
        float most = edge;
        for (const ShapeCorner& corner : corners) {
            least = std::min(least, corner.texture.at(axis));
            most = std::max(most, corner.texture.at(axis));
        }
        return least < edge - noticeable && most > edge + noticeable;
    }

private:
    /// The corners around the edge.
    static Ring ringOf(const ShapePolygon& polygon) {
        Ring ring(polygon.used().begin(), polygon.used().end());
        if (ring.size() == 4) {
            std::swap(ring[2], ring[3]);
        }
        return ring;
    }

    std::vector<Ring> slices(const Ring& ring, std::size_t axis, float reach) {
        float most = 0;
        for (const ShapeCorner& corner : ring) {
            most = std::max(most, corner.texture.at(axis));
        }
        if (most <= reach + textureSlack) {
            return {ring};
        }
        std::vector<Ring> result;
        Ring rest = ring;
        for (float seam = reach; rest.size() > 2; seam += reach) {
            Ring slice = half(rest, axis, seam, true);
            rest = half(rest, axis, seam, false);
            for (ShapeCorner& corner : slice) {
                corner.texture.at(axis) -= seam - reach;
            }
            if (slice.size() > 2) {
                result.push_back(std::move(slice));
            }
        }
        return result;
    }

    /// What of a ring lies on one side of a seam.
    Ring half(const Ring& ring, std::size_t axis, float seam, bool below) {
        Ring result;
        const auto inside = [&](const ShapeCorner& corner) {
            const float value = corner.texture.at(axis);
            return below ? value <= seam : value >= seam;
        };
        for (std::size_t k = 0; k < ring.size(); ++k) {
            const ShapeCorner& one = ring[k];
            const ShapeCorner& other = ring[(k + 1) % ring.size()];
            if (inside(one)) {
                result.push_back(one);
            }
            const float from = one.texture.at(axis) - seam;
            const float to = other.texture.at(axis) - seam;
            if ((from < 0 && to > 0) || (from > 0 && to < 0)) {
                result.push_back(between(one, other, axis, seam));
            }
        }
        return result;
    }

    /// The corner where the seam meets an edge; the same whichever way the edge runs.
    ShapeCorner between(const ShapeCorner& one, const ShapeCorner& other, std::size_t axis,
                        float seam) {
        const auto key = [&](const ShapeCorner& corner) {
            const Place& place = shape_.places[corner.place];
            return std::tuple(place.coordinate, place.point.x, place.point.y, place.point.z);
        };
        const bool turned = key(other) < key(one);
        const ShapeCorner& a = turned ? other : one;
        const ShapeCorner& b = turned ? one : other;
        const float t = (seam - a.texture.at(axis)) / (b.texture.at(axis) - a.texture.at(axis));
        const auto mixed = [t](float from, float to) { return from + (to - from) * t; };
        ShapeCorner corner = a;
        for (std::size_t i = 0; i < 2; ++i) {
            corner.texture.at(i) = i == axis ? seam : mixed(a.texture.at(i), b.texture.at(i));
        }
        for (std::size_t i = 0; i < 4; ++i) {
            corner.colour.at(i) = mixed(a.colour.at(i), b.colour.at(i));
        }
        const Place from = shape_.places[a.place];
        Place place = shape_.places[b.place];
        Vector normal(b.normal[0], b.normal[1], b.normal[2]);
        if (place.coordinate != from.coordinate) {
            const Matrix4 way = Matrix4(placed_.toModel[from.coordinate]).Inverse() *
                                placed_.toModel[place.coordinate];
            if (std::isfinite(way.a1)) {
                place.point = way * place.point;
                normal = Matrix3(way) * normal;
            }
            place.coordinate = from.coordinate;
            place.mirrors = from.mirrors;
        }
        place.point = from.point + (place.point - from.point) * static_cast<double>(t);
        corner.place = static_cast<std::uint32_t>(shape_.places.size());
        shape_.places.push_back(place);
        const Vector start(a.normal[0], a.normal[1], a.normal[2]);
        normal = start + (normal - start) * static_cast<double>(t);
        if (normal.SquareLength() > 0) {
            normal.Normalize();
            corner.normal = {static_cast<float>(normal.x), static_cast<float>(normal.y),
                             static_cast<float>(normal.z)};
        }
        return corner;
    }

    /// Adds a ring as quadrangles and a triangle that all begin with its first corner.
    static void add(const ShapePolygon& polygon, const Ring& ring,
                    std::vector<ShapePolygon>& pieces) {
        for (std::size_t k = 1; k + 1 < ring.size();) {
            ShapePolygon piece = polygon;
            piece.cornerNum = k + 2 < ring.size() ? 4 : 3;
            piece.corners = {ring[0], ring[k], ring[k + 1], ring[k + 1]};
            if (piece.cornerNum == 4) {
                piece.corners[2] = ring[k + 2];
            }
            k += piece.cornerNum - std::size_t{2};
            pieces.push_back(piece);
        }
    }

    const PlacedCoordinates& placed_;
    Shape& shape_;
};

/// How many pictures side by side one polygon can show, in each direction.
std::array<float, 2> reachOf(const pictures::PlacedTexture& texture) {
    if (!texture.repeats) {
        return {1, 1};
    }
    constexpr std::uint32_t texels = 256;
    const std::uint32_t across = texels / texture.width;
    const std::uint32_t down = texels / texture.height;
    return {static_cast<float>(across), static_cast<float>(down)};
}

}  // namespace

void cutAtClampedEdges(const Materials& materials, const PlacedCoordinates& placed, Shape& shape,
                       Dropped& dropped) {
    SeamCutter cutter(placed, shape);
    std::vector<ShapePolygon> polygons;
    polygons.reserve(shape.polygons.size());
    for (const ShapePolygon& polygon : shape.polygons) {
        const Part& part = shape.parts[polygon.part];
        std::array<bool, 2> clamped{};
        if (part.textured) {
            const TextureUse& use = *materials.materials[part.material].texture;
            clamped = {use.across == Wrap::clamp, use.down == Wrap::clamp};
        }
        const std::size_t before = polygons.size();
        if (clamped[0] || clamped[1]) {
            cutter.cutAtEdges(polygon, clamped, polygons);
        } else {
            polygons.push_back(polygon);
        }
        dropped.clampedPolygons += polygons.size() > before + 1 ? 1 : 0;
    }
    shape.polygons = std::move(polygons);
}

void cutAtSeams(const Textures& textures, const PlacedCoordinates& placed, Shape& shape,
                Dropped& dropped) {
    const auto beyond = [&](const ShapePolygon& polygon) {
        const Part& part = shape.parts[polygon.part];
        return part.textured && textures.materials[part.material].placed && repeats(polygon);
    };
    if (std::ranges::none_of(shape.polygons, beyond)) {
        return;
    }
    double together = 0;
    SeamCutter cutter(placed, shape);
    std::vector<ShapePolygon> polygons;
    polygons.reserve(shape.polygons.size());
    for (ShapePolygon& polygon : shape.polygons) {
        if (!beyond(polygon)) {
            polygons.push_back(polygon);
            continue;
        }
        const std::size_t texture = *textures.materials[shape.parts[polygon.part].material].placed;
        const std::array<float, 2> reach = reachOf(textures.placing.textures[texture]);
        double pieces = 1;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            float most = 0;
            for (const ShapeCorner& corner : polygon.used()) {
                most = std::max(most, corner.texture.at(axis));
            }
            pieces *= std::ceil(static_cast<double>((most - textureSlack) / reach.at(axis)));
        }
        if (pieces > mostPieces) {
            polygon.plain = true;
            ++dropped.tooFine;
            polygons.push_back(polygon);
            continue;
        }
        together += pieces;
        if (together > mostPiecesTogether) {
            throw ImportFault(
                "its textures repeat so often that polygons would become more than a quarter of a "
                "million pieces");
        }
        const std::size_t before = polygons.size();
        cutter.cut(polygon, reach, polygons);
        dropped.seamPolygons += polygons.size() > before + 1 ? 1 : 0;
    }
    shape.polygons = std::move(polygons);
}

}  // namespace vxbtool::importing
