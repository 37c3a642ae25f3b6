#include "vxbtool/import/strips.h"

#include <algorithm>
#include <unordered_map>

#include <meshoptimizer.h>

namespace vxbtool::importing {
namespace {

using Triangle = std::array<std::uint32_t, 3>;

/// The triangle from its least vertex on, the way that it runs.
Triangle fromLeast(Triangle triangle) {
    std::rotate(triangle.begin(), std::ranges::min_element(triangle), triangle.end());
    return triangle;
}

Triangle reversed(const Triangle& triangle) { return {triangle[0], triangle[2], triangle[1]}; }

/// Finds the triangles again that a strip names by their vertices: of several with the same ones each
/// once. Two that run opposite ways are the two sides of one.
class TriangleFinder {
public:
    explicit TriangleFinder(std::span<const Triangle> triangles) {
        for (std::uint32_t t = 0; t < triangles.size(); ++t) {
            order_.emplace_back(fromLeast(triangles[t]), t);
        }
        std::ranges::sort(order_);
        taken_.resize(order_.size());
    }

    std::uint32_t take(const Triangle& vertices) {
        const std::uint32_t* found = find(fromLeast(vertices));
        // Of a triangle that two vertices of one number make flat, no way is the other one.
        return found != nullptr ? *found : *find(fromLeast(reversed(vertices)));
    }

private:
    const std::uint32_t* find(const Triangle& least) {
        const auto first = static_cast<std::size_t>(
            std::ranges::lower_bound(order_, std::pair(least, 0U)) - order_.begin());
        if (first == order_.size() || order_[first].first != least) {
            return nullptr;
        }
        const std::size_t next = first + taken_[first];
        if (next == order_.size() || order_[next].first != least) {
            return nullptr;
        }
        ++taken_[first];
        return &order_[next].second;
    }

    std::vector<std::pair<Triangle, std::uint32_t>> order_;
    std::vector<std::uint32_t> taken_;  // where the first of equal ones stands, how many of them
};

/// Takes apart what is one row of vertices with marks between strips. Where the row turns by a triangle
/// without an area, and where a strip would begin with a triangle that runs the other way, a strip
/// ends: the files have neither.
std::vector<Strip> stripsOf(std::span<const unsigned> row, unsigned restart,
                            std::span<const std::uint32_t> vertices,
                            std::span<const Triangle> triangles) {
    TriangleFinder finder(triangles);
    std::vector<Strip> strips;
    bool open = false;
    std::size_t begin = 0;  // of the row that the mark before it began
    for (std::size_t k = 0; k + 2 < row.size(); ++k) {
        const std::array<unsigned, 3> here{row[k], row[k + 1], row[k + 2]};
        begin = row[k] == restart ? k + 1 : begin;
        if (std::ranges::find(here, restart) != here.end() || here[0] == here[1] ||
            here[1] == here[2] || here[2] == here[0]) {
            open = false;
            continue;
        }
        const Triangle named{vertices[here[0]], vertices[here[1]], vertices[here[2]]};
        const bool turned = (k - begin) % 2 == 1;
        const std::uint32_t number = finder.take(turned ? reversed(named) : named);
        Triangle own = triangles[number];
        const auto corner = std::ranges::find(own, named[0]) - own.begin();
        if (!open) {
            strips.emplace_back();
        }
        strips.back().steps.push_back({number, static_cast<std::uint8_t>(corner)});
        std::rotate(own.begin(), own.begin() + corner, own.end());
        open = open || own == named;
    }
    return strips;
}

}  // namespace

std::vector<Strip> findStrips(std::span<const Triangle> triangles) {
    // Only the vertices at hand, so that the time depends on the triangles alone.
    std::unordered_map<std::uint32_t, unsigned> numbers;
    std::vector<std::uint32_t> vertices;
    std::vector<unsigned> indices;
    for (const Triangle& triangle : triangles) {
        for (const std::uint32_t vertex : triangle) {
            const auto [at, isNew] =
                numbers.try_emplace(vertex, static_cast<unsigned>(vertices.size()));
            if (isNew) {
                vertices.push_back(vertex);
            }
            indices.push_back(at->second);
        }
    }
    constexpr unsigned restart = ~0U;
    std::vector<unsigned> strip(meshopt_stripifyBound(indices.size()));
    strip.resize(
        meshopt_stripify(strip.data(), indices.data(), indices.size(), vertices.size(), restart));
    strip.push_back(restart);

    return stripsOf(strip, restart, vertices, triangles);
}

}  // namespace vxbtool::importing
