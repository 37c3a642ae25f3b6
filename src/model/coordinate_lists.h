#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/key_map.h"

namespace mqf2vxb {

/// A coordinate list by its number in CoordinateLists. Two lists with equal entries in equal
/// order have the same number, so that comparing and copying lists costs what it costs for ints.
enum class CoordinateListId : std::int32_t {
    shared = -1,  ///< no list: the polygon, mesh or body has vertices in different coordinates
    empty = 0,    ///< the list without entries
    origin = 1,   ///< the list {0}, which every vertex and normal starts with
};

/// Every distinct coordinate list of a model, each stored once as its last entry behind a shorter
/// list.
class CoordinateLists {
public:
    CoordinateLists();

    /// The list that has the entries of `list` and then `coordinate`.
    CoordinateListId append(CoordinateListId list, std::int32_t coordinate);

    /// First entry; `list` has one.
    [[nodiscard]] std::int32_t first(CoordinateListId list) const { return node(list).first; }
    [[nodiscard]] std::size_t length(CoordinateListId list) const { return node(list).length; }
    /// All entries in order.
    [[nodiscard]] std::vector<std::int32_t> entries(CoordinateListId list) const;
    /// The number of distinct lists; every CoordinateListId but `shared` is below it.
    [[nodiscard]] std::size_t size() const { return nodes_.size(); }

private:
    struct Node {
        CoordinateListId shorter;
        std::int32_t last;
        std::int32_t first;
        std::uint32_t length;
    };
    [[nodiscard]] const Node& node(CoordinateListId list) const {
        return nodes_[static_cast<std::size_t>(list)];
    }
    CoordinateListId add(CoordinateListId list, std::int32_t coordinate);

    std::vector<Node> nodes_{{CoordinateListId::empty, -1, -1, 0}};
    KeyMap<std::uint64_t, CoordinateListId> longer_;
};

}  // namespace mqf2vxb
