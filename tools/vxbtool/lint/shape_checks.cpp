#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <tuple>
#include <utility>
#include <vector>

#include "vxbtool/lint/model_checks.h"
#include "vxbtool/shared/quadrangle.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

struct Vector {
    double x = 0;
    double y = 0;
    double z = 0;

    Vector operator-(const Vector& other) const { return {x - other.x, y - other.y, z - other.z}; }
    Vector operator+(const Vector& other) const { return {x + other.x, y + other.y, z + other.z}; }
};

Vector vectorOf(const VertexRecord& point) { return {point.x, point.y, point.z}; }

Vector cross(const Vector& a, const Vector& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

double length(const Vector& a) { return std::sqrt(dot(a, a)); }

/// Between -1 and 1; 0 when one of them has no direction.
double cosine(const Vector& a, const Vector& b) {
    const double lengths = length(a) * length(b);
    return lengths > 0 && std::isfinite(lengths) ? dot(a, b) / lengths : 0;
}

/// A drawn polygon all of whose corners lie in one space, where they can be compared.
struct Face {
    std::size_t polygon = 0;
    std::size_t corners = 0;
    std::array<std::uint32_t, 4> vertices{};
    const MaterialRecord* material = nullptr;
    bool around = false;  ///< a quadrangle's corners run around its edge, not like a strip
    bool known = false;   ///< which way a quadrangle's corners run can be told

    /// The corners around the edge.
    [[nodiscard]] std::array<std::uint32_t, 4> edge() const {
        const auto& v = vertices;
        return corners == 4 && !around ? std::array{v[0], v[1], v[3], v[2]} : v;
    }
};

/// Two corners of a face that follow each other on its edge.
struct Edge {
    std::uint32_t low;
    std::uint32_t high;
    std::uint32_t face;
    bool rising;  ///< the face goes from the lower to the higher number

    [[nodiscard]] bool sameAs(const Edge& other) const {
        return low == other.low && high == other.high;
    }
};

class ShapeCheck {
public:
    ShapeCheck(const LintedModel& linted, Findings& findings)
        : linted_(linted), model_(linted.model), findings_(findings) {}

    void check() {
        gatherPoints();
        gatherFaces();
        checkQuadrangles();
        checkTwins();
        checkSpots();
        checkNormals();
        checkWinding();
    }

private:
    void gatherPoints() {
        places_.resize(model_.vertices.size());
        lists_.resize(model_.vertices.size());
        for (const VertexRecord& vertex : model_.vertices) {
            const auto number = static_cast<std::size_t>(vertex.index);
            places_[number] = vectorOf(vertex);
            lists_[number] = vertex.cno;
        }
        normals_.resize(model_.normals.size());
        for (const NormalRecord& normal : model_.normals) {
            normals_[static_cast<std::size_t>(normal.index)] = vectorOf(normal);
        }
    }

    void gatherFaces() {
        std::vector<bool> met(linted_.polygons.size());
        for (const MaterialRecord& material : model_.materials.records) {
            const auto number = static_cast<std::size_t>(material.polygon);
            const PolygonRecord& polygon = linted_.polygons[number];
            const bool isFace =
                polygon.type == polygon_type::triangle || polygon.type == polygon_type::quadrangle;
            if (met[number] || !isFace) {
                continue;
            }
            met[number] = true;
            Face face;
            face.polygon = number;
            face.corners = vertexCount(polygon.type);
            face.material = &material;
            bool comparable = true;
            for (std::size_t k = 0; k < face.corners; ++k) {
                face.vertices[k] = static_cast<std::uint32_t>(polygon.vertex[k]);
                comparable = comparable && lists_[face.vertices[k]] == lists_[face.vertices[0]];
            }
            if (comparable) {
                faces_.push_back(face);
            }
        }
    }

    [[nodiscard]] const Vector& place(const Face& face, std::size_t corner) const {
        return places_[face.vertices[corner]];
    }

    void checkQuadrangles() {
        std::size_t strips = 0;
        std::size_t around = 0;
        for (Face& face : faces_) {
            if (face.corners != 4) {
                continue;
            }
            std::array<QuadranglePoint, 4> corners{};
            for (std::size_t k = 0; k < corners.size(); ++k) {
                const Vector& corner = place(face, k);
                corners[k] = {corner.x, corner.y, corner.z};
            }
            const double agreement = agreementOfHalves(corners);
            face.known = agreement != 0;
            face.around = agreement < 0;
            strips += face.known && !face.around ? 1 : 0;
            around += face.known && face.around ? 1 : 0;
        }
        for (const Face& face : faces_) {
            if (face.corners != 4 || !face.known) {
                continue;
            }
            if (face.around != (around > strips)) {
                findings_.add(kind::crossedQuadrangle, linted_.source.polygon(face.polygon),
                              fmt::arg("polygon", face.polygon),
                              fmt::arg("way", face.around ? "around its edge" : "like a strip"),
                              fmt::arg("others", face.around ? "like a strip" : "around the edge"));
            }
            checkFlatness(face);
        }
    }

    void checkFlatness(const Face& face) {
        constexpr double mostDegrees = 30;
        constexpr double halfTurn = 180;
        const auto edge = face.edge();
        const Vector first =
            cross(places_[edge[1]] - places_[edge[0]], places_[edge[2]] - places_[edge[0]]);
        const Vector second =
            cross(places_[edge[2]] - places_[edge[0]], places_[edge[3]] - places_[edge[0]]);
        const double degrees =
            std::acos(std::clamp(cosine(first, second), -1.0, 1.0)) * halfTurn / std::numbers::pi;
        if (length(first) > 0 && length(second) > 0 && degrees > mostDegrees) {
            findings_.add(kind::bentQuadrangle, linted_.source.polygon(face.polygon),
                          fmt::arg("polygon", face.polygon), fmt::arg("degrees", degrees));
        }
    }

    /// Polygons with the same corners that run the same way. Those that run the other way are a back
    /// side.
    void checkTwins() {
        struct Twin {
            std::array<std::uint32_t, 4> key;
            std::size_t polygon;
        };
        std::vector<Twin> twins;
        for (const Face& face : faces_) {
            std::array<std::uint32_t, 4> edge = face.edge();
            auto* const end = edge.begin() + static_cast<std::ptrdiff_t>(face.corners);
            std::rotate(edge.begin(), std::min_element(edge.begin(), end), end);
            if (face.corners == 3) {
                edge[3] = 0xFFFFFFFFU;
            }
            twins.push_back({edge, face.polygon});
        }
        std::sort(twins.begin(), twins.end(), [](const Twin& a, const Twin& b) {
            return a.key != b.key ? a.key < b.key : a.polygon < b.polygon;
        });
        for (std::size_t i = 1; i < twins.size(); ++i) {
            if (twins[i].key == twins[i - 1].key) {
                findings_.add(kind::polygonTwin, linted_.source.polygon(twins[i].polygon),
                              fmt::arg("polygon", twins[i].polygon),
                              fmt::arg("other", twins[i - 1].polygon));
            }
        }
    }

    /// Vertices on one spot of one space.
    void checkSpots() {
        std::vector<bool> used(places_.size());
        for (const Face& face : faces_) {
            for (std::size_t k = 0; k < face.corners; ++k) {
                used[face.vertices[k]] = true;
            }
        }
        std::vector<std::uint32_t> order;
        for (std::uint32_t v = 0; v < used.size(); ++v) {
            const Vector& p = places_[v];
            if (used[v] && std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z)) {
                order.push_back(v);
            }
        }
        const auto key = [&](std::uint32_t v) {
            return std::tuple(lists_[v], places_[v].x, places_[v].y, places_[v].z);
        };
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
            return std::tuple(key(a), a) < std::tuple(key(b), b);
        });
        for (std::size_t i = 1; i < order.size(); ++i) {
            if (key(order[i]) == key(order[i - 1])) {
                findings_.add(kind::vertexTwin, linted_.source.vertex(order[i]),
                              fmt::arg("vertex", order[i]), fmt::arg("other", order[i - 1]));
            }
        }
    }

    /// The direction that a face looks into: it is seen clockwise from its front.
    [[nodiscard]] Vector front(const Face& face) const {
        const auto edge = face.edge();
        const Vector first =
            cross(places_[edge[2]] - places_[edge[0]], places_[edge[1]] - places_[edge[0]]);
        return face.corners == 3 ? first
                                 : first + cross(places_[edge[3]] - places_[edge[0]],
                                                 places_[edge[2]] - places_[edge[0]]);
    }

    /// Normals on the back of their faces; where most are, the model has its corners the other way.
    void checkNormals() {
        struct Away {
            const Face* face;
            std::int32_t normal;
        };
        constexpr double clearly = 0.2;
        std::vector<Away> sides[2];
        for (const Face& face : faces_) {
            const MaterialAppearance look = model_.materials.appearance(*face.material);
            if (look.unlit() || normals_.empty()) {
                continue;
            }
            const Vector direction = front(face);
            const std::size_t number = look.shading == 'G' ? face.corners : 1;
            for (std::size_t k = 0; k < number; ++k) {
                const std::int32_t normal = linted_.polygons[face.polygon].normal[k];
                const double agreement =
                    cosine(direction, normals_[static_cast<std::size_t>(normal)]);
                if (std::fabs(agreement) > clearly) {
                    sides[agreement > 0 ? 1 : 0].push_back({&face, normal});
                }
            }
        }
        for (const Away& away : sides[0].size() > sides[1].size() ? sides[1] : sides[0]) {
            findings_.add(kind::normalAway, linted_.source.polygon(away.face->polygon),
                          fmt::arg("polygon", away.face->polygon), fmt::arg("normal", away.normal));
        }
    }

    /// Faces whose corners run the other way around than those of most faces that they are connected
    /// with, where the connections are edges of exactly two faces.
    void checkWinding() {
        const std::vector<std::array<Edge, 2>> shared = sharedEdges();
        std::vector<std::vector<std::pair<std::uint32_t, bool>>> neighbours(faces_.size());
        for (const auto& [one, other] : shared) {
            // Neighbours that run the same way go along their edge in opposite directions.
            const bool opposed = one.rising == other.rising;
            neighbours[one.face].emplace_back(other.face, opposed);
            neighbours[other.face].emplace_back(one.face, opposed);
        }
        std::vector<std::int8_t> side(faces_.size(), -1);
        for (std::uint32_t start = 0; start < faces_.size(); ++start) {
            if (side[start] >= 0) {
                continue;
            }
            std::array<std::vector<std::uint32_t>, 2> members;
            std::vector<std::uint32_t> waiting{start};
            side[start] = 0;
            while (!waiting.empty()) {
                const std::uint32_t face = waiting.back();
                waiting.pop_back();
                members[static_cast<std::uint8_t>(side[face])].push_back(face);
                for (const auto& [next, opposed] : neighbours[face]) {
                    if (side[next] < 0) {
                        side[next] = static_cast<std::int8_t>(side[face] ^ (opposed ? 1 : 0));
                        waiting.push_back(next);
                    }
                }
            }
            for (const std::uint32_t face :
                 members[members[1].size() > members[0].size() ? 0 : 1]) {
                findings_.add(kind::windsAgainst, linted_.source.polygon(faces_[face].polygon),
                              fmt::arg("polygon", faces_[face].polygon));
            }
        }
    }

    /// The edges that exactly two faces have.
    [[nodiscard]] std::vector<std::array<Edge, 2>> sharedEdges() const {
        std::vector<Edge> edges;
        for (std::uint32_t f = 0; f < faces_.size(); ++f) {
            const auto corners = faces_[f].edge();
            for (std::size_t k = 0; k < faces_[f].corners; ++k) {
                const std::uint32_t from = corners[k];
                const std::uint32_t to = corners[(k + 1) % faces_[f].corners];
                if (from != to) {
                    edges.push_back({std::min(from, to), std::max(from, to), f, from < to});
                }
            }
        }
        std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) {
            return std::tuple(a.low, a.high, a.face) < std::tuple(b.low, b.high, b.face);
        });
        std::vector<std::array<Edge, 2>> shared;
        for (std::size_t i = 0; i < edges.size();) {
            std::size_t end = i + 1;
            while (end < edges.size() && edges[end].sameAs(edges[i])) {
                ++end;
            }
            if (end == i + 2 && edges[i].face != edges[i + 1].face) {
                shared.push_back({edges[i], edges[i + 1]});
            }
            i = end;
        }
        return shared;
    }

    const LintedModel& linted_;
    const Model& model_;
    Findings& findings_;
    // By the numbers of the GEO file.
    std::vector<Vector> places_;
    std::vector<CoordinateListId> lists_;
    std::vector<Vector> normals_;
    std::vector<Face> faces_;
};

}  // namespace

void checkShapes(const LintedModel& linted, Findings& findings) {
    ShapeCheck(linted, findings).check();
}

}  // namespace vxbtool::lint
