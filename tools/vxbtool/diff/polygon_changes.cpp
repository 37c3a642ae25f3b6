#include <algorithm>
#include <array>
#include <cmath>
#include <compare>
#include <map>
#include <numbers>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include <fmt/core.h>

#include "format/format.h"
#include "vxbtool/diff/compare.h"
#include "vxbtool/diff/drawn_polygons.h"
#include "vxbtool/diff/matching.h"
#include "vxbtool/scene/placements.h"
#include "vxbtool/shared/counted.h"

namespace vxbtool::diff {
namespace {

using namespace mqf2vxb;

std::array<double, 3> components(const Point& point) {
    return {static_cast<double>(point.x), static_cast<double>(point.y),
            static_cast<double>(point.z)};
}

double wayBetween(const Point& a, const Point& b) {
    const auto one = components(a);
    const auto other = components(b);
    return std::hypot(one[0] - other[0], one[1] - other[1], one[2] - other[2]);
}

/// In degrees; 0 when one of them has no direction.
double angleBetween(const Point& a, const Point& b) {
    const auto one = components(a);
    const auto other = components(b);
    const double lengths =
        std::hypot(one[0], one[1], one[2]) * std::hypot(other[0], other[1], other[2]);
    if (lengths == 0) {
        return 0;
    }
    const double product = one[0] * other[0] + one[1] * other[1] + one[2] * other[2];
    constexpr double halfTurn = 180;
    return std::acos(std::clamp(product / lengths, -1.0, 1.0)) * halfTurn / std::numbers::pi;
}

bool equal(const Point& a, const Point& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

std::string vertexText(const Point& point) {
    return fmt::format("({}, {}, {})", point.x, point.y, point.z);
}

std::string normalText(const Point& point) {
    const auto component = [](std::int16_t value) {
        return static_cast<float>(value) / static_cast<float>(format::normalScale);
    };
    return fmt::format("({:.4}, {:.4}, {:.4})", component(point.x), component(point.y),
                       component(point.z));
}

/// Points of one owner that became others: how many, and which of them by most.
struct Displaced {
    std::unordered_set<std::uint32_t> points;
    std::uint32_t furthest = 0;
    double most = -1;
    Point before{};
    Point after{};
};

/// Of each coordinate whether it mirrors what it draws at rest.
std::vector<bool> mirroringCoordinates(const VxbFile& file) {
    std::vector<bool> mirrors;
    for (const scene::Placement& placement : scene::placementsAtRest(file)) {
        mirrors.push_back(scene::mirrors(scene::matrixOf(placement)));
    }
    return mirrors;
}

class PolygonComparison {
public:
    PolygonComparison(const VxbFile& before, const VxbFile& after, Changes& changes)
        : before_(before, mirroringCoordinates(before)),
          after_(after, mirroringCoordinates(before)),
          changes_(changes) {}

    void compare() {
        const Matching matching = matchPolygons(before_, after_);
        for (const std::uint32_t polygon : matching.removed) {
            tally(ChangeKind::polygonRemoved, before_, polygon, "removed");
        }
        for (const std::uint32_t polygon : matching.added) {
            tally(ChangeKind::polygonAdded, after_, polygon, "added");
        }
        for (const PolygonPair pair : matching.redrawn) {
            compareLooks(pair);
        }
        for (const PolygonPair pair : matching.moved) {
            comparePoints(pair, false);
        }
        addTallies();
        addDisplaced(ChangeKind::vertexMoved, movedVertices_);
        addDisplaced(ChangeKind::normalTurned, turnedNormals_);
    }

private:
    /// Polygons of one owner and one form that changed alike.
    struct Group {
        ChangeKind kind;
        std::string owner;
        std::string form;
        std::string what;

        // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler makes has a 0 in it
        auto operator<=>(const Group&) const = default;
    };

    void tally(ChangeKind kind, const DrawnPolygons& polygons, std::uint32_t index,
               std::string_view what) {
        const DrawnPolygon& polygon = polygons.all()[index];
        const std::string& owner = polygons.ownerOf(polygon);
        const std::string form = polygons.formOf(polygon);
        if (changes_.all()) {
            changes_.add(kind, fmt::format("{}, polygon at word {}", owner, polygon.offset),
                         fmt::format("{}: {}", form, what));
        } else {
            ++tallies_[{kind, owner, form, std::string(what)}];
        }
    }

    void addTallies() {
        for (const auto& [group, number] : tallies_) {
            changes_.add(group.kind, group.owner,
                         fmt::format("{}: {} {}", group.form, number, group.what), number);
        }
    }

    /// Forms that differ in a bit without a name have their codes.
    [[nodiscard]] std::string becameOf(const DrawnPolygon& one, const DrawnPolygon& other) const {
        const std::string form = after_.formOf(other);
        return before_.formOf(one) != form
                   ? "became " + form
                   : fmt::format("became {} of type 0x{:08X}", form, after_.typeOf(other));
    }

    void compareLooks(const PolygonPair& pair) {
        const DrawnPolygon& one = before_.all()[pair.before];
        const DrawnPolygon& other = after_.all()[pair.after];
        if (one.form != other.form) {
            tally(ChangeKind::polygonForm, before_, pair.before, becameOf(one, other));
            return;
        }
        if (one.colours != other.colours) {
            tally(ChangeKind::polygonColours, before_, pair.before, "got other colours");
        }
        if (one.texels != other.texels) {
            tally(ChangeKind::polygonTexels, before_, pair.before, "got other texture coordinates");
        }
        if (one.texture != other.texture) {
            tally(ChangeKind::polygonTexture, before_, pair.before, "got another texture");
        }
        if (one.backwards != other.backwards) {
            tally(ChangeKind::polygonWinding, before_, pair.before,
                  "got the corners the other way around");
        }
        comparePoints(pair, one.look() != other.look() || one.backwards != other.backwards);
    }

    /// `told` is whether the pair differs in more.
    void comparePoints(const PolygonPair& pair, bool told) {
        const DrawnPolygon& one = before_.all()[pair.before];
        const DrawnPolygon& other = after_.all()[pair.after];
        // In the same places, corners are the same by their order; else their numbers tell it better.
        const bool samePlaces = one.points == other.points;
        const auto partner = [&](std::uint32_t corner) -> std::uint32_t {
            const auto* at = std::find(one.order.begin(), one.order.end(), corner);
            return samePlaces ? other.order[static_cast<std::size_t>(at - one.order.begin())]
                              : corner;
        };
        for (std::uint32_t corner = 0; corner < std::min(one.corners, other.corners); ++corner) {
            const std::uint32_t vertex = one.vertices[corner];
            const std::optional<Point> from = before_.vertex(one, vertex);
            const std::optional<Point> to = after_.vertex(other, other.vertices[partner(corner)]);
            if (from && to && !equal(*from, *to)) {
                displace(movedVertices_[before_.ownerOf(one)], vertex, *from, *to,
                         wayBetween(*from, *to));
                told = true;
            } else if (before_.vertexOwner(one, vertex) !=
                       after_.vertexOwner(other, other.vertices[partner(corner)])) {
                tally(ChangeKind::polygonNumbers, before_, pair.before,
                      "got a vertex of another coordinate");
                told = true;
            }
        }
        for (std::uint32_t corner = 0; corner < std::min(one.normalNum, other.normalNum);
             ++corner) {
            const std::uint32_t normal = one.normals[corner];
            const std::optional<Point> from = before_.normal(one, normal);
            const std::uint32_t same = one.normalNum > 1 ? partner(corner) : corner;
            const std::optional<Point> to = after_.normal(other, other.normals[same]);
            if (before_.normalOwner(one, normal) !=
                after_.normalOwner(other, other.normals[same])) {
                tally(ChangeKind::polygonNumbers, before_, pair.before,
                      "got a normal of another coordinate");
                told = true;
            } else if (from && to && !equal(*from, *to)) {
                displace(turnedNormals_[before_.ownerOf(one)], normal, *from, *to,
                         angleBetween(*from, *to));
                told = true;
            }
        }
        if (!told) {
            // Numbers that name no point: a sprite's size, or normals in a model without any.
            tally(ChangeKind::polygonNumbers, before_, pair.before,
                  "got other numbers that name no point");
        }
    }

    static void displace(Displaced& displaced, std::uint32_t index, const Point& from,
                         const Point& to, double by) {
        displaced.points.insert(index);
        if (by > displaced.most) {
            displaced.furthest = index;
            displaced.most = by;
            displaced.before = from;
            displaced.after = to;
        }
    }

    void addDisplaced(ChangeKind kind, const std::map<std::string, Displaced>& byOwner) {
        const bool vertices = kind == ChangeKind::vertexMoved;
        for (const auto& [owner, displaced] : byOwner) {
            const std::size_t number = displaced.points.size();
            const std::string way =
                vertices ? fmt::format("{} -> {}, by {:.1f}", vertexText(displaced.before),
                                       vertexText(displaced.after), displaced.most)
                         : fmt::format("{} -> {}, by {:.1f} degrees", normalText(displaced.before),
                                       normalText(displaced.after), displaced.most);
            changes_.add(kind, owner,
                         fmt::format("{}, {} {}{}",
                                     vertices ? counted(number, "vertex moved", "vertices moved")
                                              : counted(number, "normal turned", "normals turned"),
                                     vertices ? "vertex" : "normal", displaced.furthest,
                                     number > 1 ? fmt::format(" most: {}", way) : ": " + way),
                         number);
        }
    }

    const DrawnPolygons before_;
    const DrawnPolygons after_;
    Changes& changes_;
    std::map<Group, std::size_t> tallies_;
    std::map<std::string, Displaced> movedVertices_;
    std::map<std::string, Displaced> turnedNormals_;
};

/// A point as one number.
std::uint64_t keyOf(const Point& point) {
    return std::uint64_t{static_cast<std::uint16_t>(point.x)} << 32U |
           std::uint64_t{static_cast<std::uint16_t>(point.y)} << 16U |
           static_cast<std::uint16_t>(point.z);
}

/// Points that differ in nothing but their order are the same. Those that polygons use were compared
/// with the polygons; what is left are those that none uses.
void comparePointBlocks(const VxbFile& before, const PointBlock& one, const VxbFile& after,
                        const PointBlock& other, ChangeKind numberKind, ChangeKind placesKind,
                        bool samePolygons, const std::string& what, Changes& changes) {
    if (one.number != other.number) {
        changes.add(numberKind, what, fmt::format("{} -> {}", one.number, other.number));
        return;
    }
    if (!samePolygons) {
        return;
    }
    const auto sorted = [](const VxbFile& file, const PointBlock& block) {
        std::vector<std::uint64_t> keys;
        keys.reserve(block.number);
        for (std::uint32_t i = 0; i < block.number; ++i) {
            keys.push_back(keyOf(file.point(block, i)));
        }
        std::sort(keys.begin(), keys.end());
        return keys;
    };
    const std::vector<std::uint64_t> keysBefore = sorted(before, one);
    const std::vector<std::uint64_t> keysAfter = sorted(after, other);
    std::vector<std::uint64_t> onlyBefore;
    std::set_difference(keysBefore.begin(), keysBefore.end(), keysAfter.begin(), keysAfter.end(),
                        std::back_inserter(onlyBefore));
    if (!onlyBefore.empty()) {
        changes.add(placesKind, what,
                    fmt::format("{} that no polygon uses became others", onlyBefore.size()),
                    onlyBefore.size());
    }
}

}  // namespace

void comparePolygons(const VxbFile& before, const VxbFile& after, Changes& changes) {
    const std::size_t known = changes.kept().size();
    PolygonComparison(before, after, changes).compare();
    const bool same = changes.kept().size() == known;
    const auto compare = [&](const PointBlock& one, const PointBlock& other, ChangeKind number,
                             ChangeKind places, const char* what) {
        comparePointBlocks(before, one, after, other, number, places, same, what, changes);
    };
    compare(before.vertices.independent, after.vertices.independent, ChangeKind::vertexNumber,
            ChangeKind::vertexUnused, "vertices");
    compare(before.vertices.shared, after.vertices.shared, ChangeKind::vertexNumber,
            ChangeKind::vertexUnused, "shared vertices");
    compare(before.normals.independent, after.normals.independent, ChangeKind::normalNumber,
            ChangeKind::normalUnused, "normals");
    compare(before.normals.shared, after.normals.shared, ChangeKind::normalNumber,
            ChangeKind::normalUnused, "shared normals");
}

}  // namespace vxbtool::diff
