#include "vxbtool/render/triangles.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/render/fault.h"
#include "vxbtool/scene/placements.h"

namespace vxbtool::render {
namespace {

using scene::Placement;
using scene::Scene;

constexpr Placement origin{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

/// Whether each coordinate is the focus or hangs on it.
std::vector<bool> focusedCoordinates(const Scene& scene, std::optional<std::uint32_t> focus) {
    const std::size_t number = scene.coordinates.size();
    std::vector<bool> focused(number, !focus);
    if (!focus) {
        return focused;
    }
    std::vector<bool> known(number, false);
    known.at(*focus) = focused.at(*focus) = true;
    std::vector<std::uint32_t> way;
    for (std::uint32_t first = 0; first < number; ++first) {
        // Up to one that is known; one without parent is its own answer.
        std::optional<std::uint32_t> coordinate = first;
        bool answer = false;
        for (way.clear(); coordinate && *coordinate < number;
             coordinate = scene.coordinates[*coordinate].parent) {
            if (known[*coordinate]) {
                answer = focused[*coordinate];
                break;
            }
            known[*coordinate] = true;
            way.push_back(*coordinate);
        }
        for (const std::uint32_t each : way) {
            focused[each] = answer;
        }
    }
    return focused;
}

/// Calls `use(polygon, coordinate)` for each polygon at each place where it is drawn; the coordinate
/// is one beyond the last for what is drawn at the origin.
template <class Use>
void forEachDrawn(const Scene& scene, Use use) {
    for (const scene::Body& body : scene.bodies) {
        const std::span polygons =
            std::span(scene.polygons).subspan(body.firstPolygon, body.polygonNum);
        // The corners of shared polygons know their coordinates themselves.
        const std::size_t times =
            body.shared ? 1 : std::max<std::size_t>(body.coordinates.size(), 1);
        for (std::size_t i = 0; i < times; ++i) {
            const auto coordinate = body.shared || body.coordinates.empty()
                                        ? static_cast<std::uint32_t>(scene.coordinates.size())
                                        : body.coordinates[i];
            for (const scene::Polygon& polygon : polygons) {
                use(polygon, coordinate, body.shared);
            }
        }
    }
}

std::uint32_t vertexNumOf(const scene::Polygon& polygon) { return polygon.cornerNum == 4 ? 6 : 3; }

/// One polygon at its place.
struct PlacedPolygon {
    std::array<Vertex, 4> corners{};  // those of triangles clockwise, as seen from the front
    std::uint32_t number = 0;
    bool focused = true;

    [[nodiscard]] bool isFinite() const {
        return std::all_of(corners.begin(), corners.begin() + number, [](const Vertex& corner) {
            return std::ranges::all_of(corner.place, [](float v) { return std::isfinite(v); });
        });
    }
};

class Builder {
public:
    Builder(const Scene& scene, const std::vector<Placement>& placements,
            std::optional<std::uint32_t> focus)
        : scene_(scene), placements_(placements), focused_(focusedCoordinates(scene, focus)) {}

    Triangles build() {
        reserve();
        forEachDrawn(scene_, [this](const scene::Polygon& polygon, std::uint32_t coordinate,
                                    bool shared) { add(polygon, coordinate, shared); });
        for (const Run& run : runs_) {
            if (run.vertexNum > 0 && scene_.looks[run.look].blend == scene::Blend::opaque) {
                result_.opaque.push_back(run);
            }
        }
        return std::move(result_);
    }

private:
    /// Gives every look its room among the vertices.
    void reserve() {
        std::vector<std::uint64_t> numbers(scene_.looks.size());
        std::uint64_t all = 0;
        forEachDrawn(scene_, [&](const scene::Polygon& polygon, std::uint32_t, bool) {
            numbers.at(polygon.look) += vertexNumOf(polygon);
            all += vertexNumOf(polygon);
            if (all > mostTriangles * 3) {
                throw RenderFault(fmt::format(
                    "its coordinates draw more than {} triangles in all, too many for a picture",
                    mostTriangles));
            }
        });
        std::uint32_t first = 0;
        for (std::uint32_t look = 0; look < numbers.size(); ++look) {
            runs_.push_back({look, first, 0});
            first += static_cast<std::uint32_t>(numbers[look]);
        }
        result_.vertices.resize(first);
    }

    PlacedPolygon place(const scene::Polygon& polygon, std::uint32_t coordinate,
                        bool shared) const {
        PlacedPolygon result;
        result.number = polygon.cornerNum;
        for (std::uint32_t i = 0; i < polygon.cornerNum; ++i) {
            const scene::Corner& corner = scene_.corners.at(polygon.firstCorner + i);
            const std::uint32_t at = shared ? corner.coordinate : coordinate;
            const bool known = at < placements_.size();
            const Placement& placement = known ? placements_[at] : origin;
            result.corners[i] = {
                scene::transformed(placement, corner.place),
                scene::transformedNormal(scene::matrixOf(placement), corner.normal),
                {corner.colour[0], corner.colour[1], corner.colour[2], 255},
                corner.texel};
            result.focused = result.focused && (!known || focused_[at]);
        }
        // What runs clockwise in the space of its coordinate does so here, unless that mirrors.
        if (!shared && coordinate < placements_.size() &&
            scene::mirrors(scene::matrixOf(placements_[coordinate]))) {
            std::swap(result.corners[1], result.corners[2]);
        }
        // The triangle of a coordinate that is flat, say, has its own direction only.
        const Vector3& a = result.corners[0].place;
        const Vector3 flat = scene::cross(scene::minus(result.corners[2].place, a),
                                          scene::minus(result.corners[1].place, a));
        for (Vertex& corner : result.corners) {
            corner.normal = scene::normalised(corner.normal)
                                .value_or(scene::normalised(flat).value_or(Vector3{0, 0, 1}));
        }
        return result;
    }

    void add(const scene::Polygon& polygon, std::uint32_t coordinate, bool shared) {
        const PlacedPolygon placed = place(polygon, coordinate, shared);
        if (!placed.isFinite()) {
            return;
        }
        Run& run = runs_[polygon.look];
        Vertex* next = &result_.vertices[run.firstVertex + run.vertexNum];
        const std::uint32_t added = vertexNumOf(polygon);
        constexpr std::array<std::size_t, 6> order{0, 1, 2, 2, 1, 3};
        for (std::uint32_t i = 0; i < added; ++i) {
            next[i] = placed.corners[order[i]];
        }
        if (scene_.looks[polygon.look].blend != scene::Blend::opaque) {
            SeeThrough each{{polygon.look, run.firstVertex + run.vertexNum, added}, {}};
            for (std::uint32_t i = 0; i < placed.number; ++i) {
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    each.middle[axis] +=
                        placed.corners[i].place[axis] / static_cast<float>(placed.number);
                }
            }
            result_.seeThrough.push_back(each);
        }
        run.vertexNum += added;
        for (std::uint32_t i = 0; i < placed.number; ++i) {
            result_.places.push_back(placed.corners[i].place);
            if (placed.focused) {
                result_.focused.push_back(placed.corners[i].place);
            }
        }
    }

    const Scene& scene_;
    const std::vector<Placement>& placements_;
    std::vector<bool> focused_;
    std::vector<Run> runs_;  // of every look
    Triangles result_;
};

}  // namespace

Triangles makeTriangles(const Scene& scene, const std::vector<Placement>& placements,
                        std::optional<std::uint32_t> focus) {
    return Builder(scene, placements, focus).build();
}

}  // namespace vxbtool::render
