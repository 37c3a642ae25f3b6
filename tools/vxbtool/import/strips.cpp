#include "vxbtool/import/strips.h"

#include <algorithm>
#include <unordered_map>

#include <meshoptimizer.h>

namespace vxbtool::importing {
namespace {

using Triangle = std::array<std::uint32_t, 3>;

Triangle sorted(Triangle triangle) {
    std::ranges::sort(triangle);
    return triangle;
}

/// Finds the triangles again that a strip names by their vertices: of several with the same ones each
/// once.
class TriangleFinder {
public:
    explicit TriangleFinder(std::span<const Triangle> triangles) {
        for (std::uint32_t t = 0; t < triangles.size(); ++t) {
            order_.emplace_back(sorted(triangles[t]), t);
        }
        std::ranges::sort(order_);
        taken_.resize(order_.size());
    }

    std::uint32_t take(const Triangle& vertices) {
        auto at = static_cast<std::size_t>(
            std::ranges::lower_bound(order_, std::pair(sorted(vertices), 0U)) - order_.begin());
        while (taken_[at] != 0) {
            ++at;
        }
        taken_[at] = 1;
        return order_[at].second;
    }

private:
    std::vector<std::pair<Triangle, std::uint32_t>> order_;
    std::vector<char> taken_;
};

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

    TriangleFinder finder(triangles);
    std::vector<Strip> strips;
    std::size_t first = 0;
    for (std::size_t i = 0; i < strip.size(); ++i) {
        if (strip[i] != restart) {
            continue;
        }
        Strip found;
        for (std::size_t k = first; k + 2 < i; ++k) {
            const Triangle named{vertices[strip[k]], vertices[strip[k + 1]],
                                 vertices[strip[k + 2]]};
            const std::uint32_t number = finder.take(named);
            const Triangle& own = triangles[number];
            const auto corner = std::ranges::find(own, named[0]) - own.begin();
            found.steps.push_back({number, static_cast<std::uint8_t>(corner)});
        }
        if (!found.steps.empty()) {
            strips.push_back(std::move(found));
        }
        first = i + 1;
    }
    return strips;
}

}  // namespace vxbtool::importing
