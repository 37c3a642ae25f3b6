#include "vxbtool/import/faces.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace vxbtool::importing {
namespace {

/// From here on a polygon is cut like a fan: what is noted of its corners takes their square.
constexpr std::size_t mostEars = 16384;
/// How often, for each corner, it may be looked whether a corner lies in a triangle.
constexpr std::size_t looksPerCorner = 768;

/// How far the two halves of a flat quadrangle may turn against each other, as a cosine.
constexpr double flat = 0.9999;

struct Flat {
    double x;
    double y;
};

double turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Cuts off ears: corners whose triangle lies inside the polygon. One in which they are hard to find,
/// as in rings that cross themselves, is cut like a fan from some point on.
class EarCutter {
public:
    EarCutter(std::span<const Vector> ring, const Vector& front) {
        // Seen along the axis that the front is nearest to.
        const double x = std::abs(front.x);
        const double y = std::abs(front.y);
        const double z = std::abs(front.z);
        for (const Vector& p : ring) {
            if (z >= x && z >= y) {
                points_.push_back({front.z > 0 ? p.x : -p.x, p.y});
            } else if (x >= y) {
                points_.push_back({front.x > 0 ? p.y : -p.y, p.z});
            } else {
                points_.push_back({front.y > 0 ? p.z : -p.z, p.x});
            }
            left_.push_back(left_.size());
        }
        for (std::size_t i = 0; i < points_.size(); ++i) {
            note(i);
        }
    }

    /// The next triangle, as indices into the ring.
    std::array<std::size_t, 3> next() {
        std::size_t best = 0;
        const std::size_t most = looksPerCorner * points_.size();
        bool found = false;
        // The corners beside the last ear first, of which one is an ear in long and thin outlines.
        for (std::size_t tried = 0; !found && tried < left_.size() && looks_ < most; ++tried) {
            const std::size_t before = tried == 0 ? 0 : tried == 1 ? left_.size() - 1 : tried - 1;
            best = (start_ + before) % left_.size();
            found = isEar(best);
        }
        if (!found) {
            best = 0;
            exact_ = exact_ && inward_.empty();
        }
        const std::array result{corner(best + left_.size() - 1), corner(best), corner(best + 1)};
        left_.erase(left_.begin() + static_cast<std::ptrdiff_t>(best));
        std::erase(inward_, result[1]);
        start_ = left_.empty() ? 0 : best % left_.size();
        if (left_.size() > 2) {
            note(best + left_.size() - 1);
            note(best);
        }
        return result;
    }

    /// Whether all triangles so far were ears.
    [[nodiscard]] bool isExact() const { return exact_; }

private:
    [[nodiscard]] std::size_t corner(std::size_t at) const { return left_[at % left_.size()]; }

    [[nodiscard]] double turnAt(std::size_t at) const {
        return turn(points_[corner(at + left_.size() - 1)], points_[corner(at)],
                    points_[corner(at + 1)]);
    }

    /// Notes whether the outline turns inward there, or not at all.
    void note(std::size_t at) {
        const std::size_t point = corner(at);
        const auto known = std::ranges::find(inward_, point);
        const bool inward = turnAt(at) <= 0;
        if (inward && known == inward_.end()) {
            inward_.push_back(point);
        } else if (!inward && known != inward_.end()) {
            inward_.erase(known);
        }
    }

    /// Where a corner lies in the triangle, one does at which the outline turns inward.
    [[nodiscard]] bool isEar(std::size_t at) {
        const Flat& a = points_[corner(at + left_.size() - 1)];
        const Flat& b = points_[corner(at)];
        const Flat& c = points_[corner(at + 1)];
        if (turn(a, b, c) <= 0) {
            return false;
        }
        return std::ranges::none_of(inward_, [&](std::size_t other) {
            ++looks_;
            const Flat& p = points_[other];
            return turn(a, b, p) > 0 && turn(b, c, p) > 0 && turn(c, a, p) > 0;
        });
    }

    std::vector<Flat> points_;
    std::vector<std::size_t> left_;
    std::vector<std::size_t> inward_;  // those of them at which the outline does not turn outward
    std::size_t start_ = 0;
    std::size_t looks_ = 0;  ///< at a corner, whether it lies in a triangle
    bool exact_ = true;
};

/// Adds a triangle unless it has no area.
void addTriangle(const std::array<Vector, 3>& ring, const std::array<std::uint32_t, 3>& vertices,
                 std::vector<Face>& faces) {
    if (frontOf(ring).SquareLength() > 0) {
        faces.push_back({3, {vertices[0], vertices[1], vertices[2], 0}});
    }
}

}  // namespace

Vector vectorOf(const aiVector3D& vector) { return {vector.x, vector.y, vector.z}; }

Vector frontOf(std::span<const Vector> ring) {
    Vector front;
    for (std::size_t i = 1; i + 1 < ring.size(); ++i) {
        front += (ring[i] - ring[0]) ^ (ring[i + 1] - ring[0]);
    }
    return front;
}

bool cutPolygon(const aiMesh& mesh, std::span<const unsigned> corners, std::vector<Face>& faces) {
    std::vector<Vector> ring;
    ring.reserve(corners.size());
    for (const unsigned corner : corners) {
        ring.push_back(vectorOf(mesh.mVertices[corner]));
    }
    if (corners.size() == 3) {
        addTriangle({ring[0], ring[1], ring[2]}, {corners[0], corners[1], corners[2]}, faces);
        return true;
    }
    const Vector front = frontOf(ring);
    if (corners.size() == 4) {
        for (std::size_t first = 0; first < 2; ++first) {
            const auto at = [&](std::size_t i) { return (first + i) % 4; };
            const std::array one{ring[at(0)], ring[at(1)], ring[at(3)]};
            const std::array other{ring[at(1)], ring[at(2)], ring[at(3)]};
            const Vector a = frontOf(one);
            const Vector b = frontOf(other);
            if (a * b > flat * a.Length() * b.Length() && a * b > 0) {
                faces.push_back(
                    {4, {corners[at(0)], corners[at(1)], corners[at(2)], corners[at(3)]}});
                return true;
            }
        }
    }
    if (corners.size() > mostEars) {
        for (std::size_t i = 1; i + 1 < ring.size(); ++i) {
            addTriangle({ring[0], ring[i], ring[i + 1]}, {corners[0], corners[i], corners[i + 1]},
                        faces);
        }
        return false;
    }
    EarCutter cutter(ring, front);
    for (std::size_t i = 2; i < ring.size(); ++i) {
        const auto [a, b, c] = cutter.next();
        addTriangle({ring[a], ring[b], ring[c]}, {corners[a], corners[b], corners[c]}, faces);
    }
    return cutter.isExact();
}

}  // namespace vxbtool::importing
