#include "organise/pivots.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "base/diagnostics.h"

namespace mqf2vxb {
namespace {

/// A pivot to subtract from every vertex of one coordinate list, once for each time that its
/// coordinate stands in the list.
struct ListPivot {
    std::uint32_t pivot;
    std::uint32_t times;
};

/// The pivots of the lists that a model's vertices lie in.
class ListPivots {
public:
    explicit ListPivots(const Model& model) : lists_(model.coordinateLists) {
        for (std::uint32_t i = 0; i < model.pivots.size(); ++i) {
            byCoordinate_.emplace_back(model.pivots[i].coord, i);
        }
        std::sort(byCoordinate_.begin(), byCoordinate_.end());
    }

    /// The pivots of a list in their order, up to the next call.
    const std::vector<ListPivot>& of(CoordinateListId list) {
        found_.clear();
        std::vector<std::int32_t> coordinates = lists_.entries(list);
        std::sort(coordinates.begin(), coordinates.end());
        for (auto first = coordinates.begin(); first != coordinates.end();) {
            const auto last = std::upper_bound(first, coordinates.end(), *first);
            const auto times = static_cast<std::uint32_t>(last - first);
            for (auto at = std::lower_bound(byCoordinate_.begin(), byCoordinate_.end(),
                                            std::pair(*first, 0U));
                 at != byCoordinate_.end() && at->first == *first; ++at) {
                found_.push_back({at->second, times});
            }
            first = last;
        }
        std::sort(found_.begin(), found_.end(),
                  [](const ListPivot& a, const ListPivot& b) { return a.pivot < b.pivot; });
        return found_;
    }

private:
    const CoordinateLists& lists_;
    std::vector<std::pair<std::int32_t, std::uint32_t>> byCoordinate_;  // coordinates, pivots
    std::vector<ListPivot> found_;
};

/// The order of the subtractions matters, because each of them rounds; so the pivots of one
/// coordinate cannot be added up beforehand. This ceiling keeps short files from taking hours.
constexpr std::uint64_t mostSubtractions = std::uint64_t{1} << 30U;

std::uint64_t subtractions(const std::vector<ListPivot>& pivots) {
    std::uint64_t number = 0;
    for (const ListPivot& pivot : pivots) {
        number += pivot.times;
    }
    return number;
}

void subtract(const Table<PivotRecord>& pivots, const std::vector<ListPivot>& listed,
              VertexRecord& vertex) {
    for (const ListPivot& one : listed) {
        const PivotRecord& pivot = pivots[one.pivot];
        for (std::uint32_t i = 0; i < one.times; ++i) {
            vertex.x -= pivot.x;
            vertex.y -= pivot.y;
            vertex.z -= pivot.z;
        }
    }
}

/// The numbers of all vertices, those with the same list side by side.
std::vector<std::uint32_t> verticesByList(const Model& model) {
    const auto listOf = [](const VertexRecord& vertex) {
        return static_cast<std::size_t>(vertex.cno);
    };
    std::vector<std::uint32_t> place(model.coordinateLists.size());
    for (const VertexRecord& vertex : model.vertices) {
        ++place[listOf(vertex)];
    }
    std::exclusive_scan(place.begin(), place.end(), place.begin(), 0U);
    std::vector<std::uint32_t> vertices(model.vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        vertices[place[listOf(model.vertices[i])]++] = i;
    }
    return vertices;
}

}  // namespace

void applyPivots(Model& model) {
    if (model.pivots.empty() || !model.primitives.written()) {
        return;
    }
    // Vertices with equal lists have equal pivots, which are looked up once for all of them.
    const std::vector<std::uint32_t> vertices = verticesByList(model);
    ListPivots listPivots(model);
    std::uint64_t left = mostSubtractions;
    for (auto first = vertices.begin(); first != vertices.end();) {
        const CoordinateListId list = model.vertices[*first].cno;
        const auto last = std::find_if(
            first, vertices.end(), [&](std::uint32_t v) { return model.vertices[v].cno != list; });
        const std::vector<ListPivot>& pivots = listPivots.of(list);
        const auto alike = static_cast<std::uint64_t>(last - first);
        const std::uint64_t each = subtractions(pivots);
        if (each > left / alike) {
            notCorrectData({model.description.axs.fileName},
                           "more than 1073741824 pivots to subtract from all vertices");
        }
        left -= each * alike;
        for (; first != last; ++first) {
            subtract(model.pivots, pivots, model.vertices[*first]);
        }
    }
}

}  // namespace mqf2vxb
