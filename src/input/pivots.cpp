#include "input/pivots.h"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <unordered_map>
#include <vector>

#include "driver/diagnostics.h"

namespace mqf2vxb {
namespace {

using PivotsOfCoordinate = std::unordered_map<std::int32_t, std::vector<std::size_t>>;

/// A pivot that the vertices of one list have subtracted, once for each of its coordinate's places
/// in the list.
struct ListPivot {
    std::size_t pivot;
    std::size_t times;
};

/// The pivots of a list in their order.
std::vector<ListPivot> pivotsOfList(const Model& model, const PivotsOfCoordinate& byCoordinate,
                                    CoordinateListId list) {
    std::unordered_map<std::int32_t, std::size_t> places;
    for (const std::int32_t coordinate : model.coordinateLists.entries(list)) {
        ++places[coordinate];
    }
    std::vector<ListPivot> result;
    for (const auto& [coordinate, times] : places) {
        const auto pivots = byCoordinate.find(coordinate);
        if (pivots != byCoordinate.end()) {
            for (const std::size_t pivot : pivots->second) {
                result.push_back({pivot, times});
            }
        }
    }
    std::sort(result.begin(), result.end(),
              [](const ListPivot& a, const ListPivot& b) { return a.pivot < b.pivot; });
    return result;
}

/// Rounding makes each subtraction's place in the order count, so that many pivots of one
/// coordinate cannot be put together: a ceiling keeps short files from asking for hours.
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
        for (std::size_t i = 0; i < one.times; ++i) {
            vertex.x -= pivot.x;
            vertex.y -= pivot.y;
            vertex.z -= pivot.z;
        }
    }
}

}  // namespace

void applyPivots(Model& model) {
    if (model.pivots.empty() || !model.primitives.written()) {
        return;
    }
    PivotsOfCoordinate byCoordinate;
    for (std::size_t i = 0; i < model.pivots.size(); ++i) {
        byCoordinate[model.pivots[i].coord].push_back(i);
    }

    // Vertices with equal lists have equal pivots, which are looked up once for all of them.
    std::vector<std::size_t> vertices(model.vertices.size());
    std::iota(vertices.begin(), vertices.end(), std::size_t{0});
    std::sort(vertices.begin(), vertices.end(), [&](std::size_t a, std::size_t b) {
        return model.vertices[a].cno < model.vertices[b].cno;
    });
    std::uint64_t left = mostSubtractions;
    for (auto first = vertices.begin(); first != vertices.end();) {
        const CoordinateListId list = model.vertices[*first].cno;
        const auto last = std::find_if(
            first, vertices.end(), [&](std::size_t v) { return model.vertices[v].cno != list; });
        const std::vector<ListPivot> pivots = pivotsOfList(model, byCoordinate, list);
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
