#include "input/pivots.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <vector>

namespace mqf2vxb {
namespace {

using PivotsOfCoordinate = std::unordered_map<std::int32_t, std::vector<std::size_t>>;

/// The pivots that a vertex with this list has subtracted, in their order.
std::vector<std::size_t> pivotsOfList(const Model& model, const PivotsOfCoordinate& byCoordinate,
                                      CoordinateListId list) {
    std::vector<std::size_t> result;
    for (const std::int32_t coordinate : model.coordinateLists.entries(list)) {
        const auto pivots = byCoordinate.find(coordinate);
        if (pivots != byCoordinate.end()) {
            result.insert(result.end(), pivots->second.begin(), pivots->second.end());
        }
    }
    std::sort(result.begin(), result.end());
    return result;
}

}  // namespace

void applyPivots(Model& model) {
    if (model.pivots.empty()) {
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
    CoordinateListId list = CoordinateListId::empty;
    std::vector<std::size_t> pivots;
    for (const std::size_t v : vertices) {
        VertexRecord& vertex = model.vertices[v];
        if (vertex.cno != list) {
            list = vertex.cno;
            pivots = pivotsOfList(model, byCoordinate, list);
        }
        for (const std::size_t i : pivots) {
            const PivotRecord& pivot = model.pivots[i];
            vertex.x -= pivot.x;
            vertex.y -= pivot.y;
            vertex.z -= pivot.z;
        }
    }
}

}  // namespace mqf2vxb
