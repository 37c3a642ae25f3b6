#include "model/coordinate_lists.h"

#include "base/diagnostics.h"
#include "base/out_of_memory.h"

namespace mqf2vxb {
namespace {

std::uint64_t keyOf(CoordinateListId list, std::int32_t coordinate) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(list)) << 32U) |
           static_cast<std::uint32_t>(coordinate);
}

}  // namespace

CoordinateLists::CoordinateLists() { append(CoordinateListId::empty, 0); }

CoordinateListId CoordinateLists::append(CoordinateListId list, std::int32_t coordinate) {
    return withMemory(
        [&] {
            return longer_.find(keyOf(list, coordinate), [&] { return add(list, coordinate); });
        },
        [&] {
            tableAllocationFailed({"Vertex's Coordinate Index Data Base"}, sizeof(Node),
                                  nodes_.size() + 1, true);
        });
}

CoordinateListId CoordinateLists::add(CoordinateListId list, std::int32_t coordinate) {
    const Node shorter = node(list);
    nodes_.push_back({list, coordinate,
                      list == CoordinateListId::empty ? coordinate : shorter.first,
                      shorter.length + 1});
    return static_cast<CoordinateListId>(nodes_.size() - 1);
}

std::vector<std::int32_t> CoordinateLists::entries(CoordinateListId list) const {
    std::vector<std::int32_t> result(length(list));
    for (std::size_t i = result.size(); i > 0; --i) {
        result[i - 1] = node(list).last;
        list = node(list).shorter;
    }
    return result;
}

}  // namespace mqf2vxb
