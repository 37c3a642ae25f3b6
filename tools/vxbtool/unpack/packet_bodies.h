#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool::unpack {

/// Independent packet groups that are drawn under one coordinate list.
struct PacketBody {
    std::size_t first = 0;  ///< packet group
    std::size_t end = 0;
    std::vector<std::uint32_t> list;  ///< coordinates in their order
};

/// What is known before the bodies are.
struct BodyHints {
    std::vector<std::uint32_t> coordinateOfHeader;
    /// First coordinate of each vertex; all bits set where it is not known.
    std::vector<std::uint32_t> coordinateOfVertex;
    /// Coordinates that own shared normals and no shared vertices.
    std::set<std::uint32_t> normalOwners;
};

/// The bodies of a file, found from the headers that name their groups, in the order of the groups.
std::vector<PacketBody> packetBodies(const mqf2vxb::VxbFile& file, BodyHints hints);

}  // namespace vxbtool::unpack
