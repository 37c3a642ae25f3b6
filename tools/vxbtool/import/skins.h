#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/import/coordinate_map.h"

namespace vxbtool::importing {

/// Where the vertices of a mesh under a node go: each to the joint of its largest weight, the others
/// to the node.
struct Skin {
    /// What takes points of the mesh into the space of a coordinate's node.
    struct Binding {
        std::uint32_t coordinate = 0;
        Matrix4 toNode;
    };
    std::vector<Binding> bindings;      ///< the first is the node's
    std::vector<std::uint32_t> owners;  ///< of each vertex its binding; empty: all the first
};

Skin bindSkin(const aiMesh& mesh, const CoordinateMap& map, std::uint32_t coordinate);

}  // namespace vxbtool::importing
