#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool {

/// For each packet group the coordinates that draw it, ascending. Groups of shared polygons have none. A
/// file may list a group several times under one coordinate.
std::vector<std::vector<std::uint32_t>> listingsOfGroups(const mqf2vxb::VxbFile& file);
/// The same, each coordinate once.
std::vector<std::vector<std::uint32_t>> ownersOfGroups(const mqf2vxb::VxbFile& file);

/// For each shared vertex, and for each shared normal, the coordinate that it moves with. One that no
/// header names has none.
struct SharedOwners {
    explicit SharedOwners(const mqf2vxb::VxbFile& file);

    std::vector<std::optional<std::uint32_t>> vertices;
    std::vector<std::optional<std::uint32_t>> normals;
};

/// The point that a packet names: `shared` packets count theirs in the shared block, the others from
/// the first independent one on into the shared block. Nothing for a number that names none.
std::optional<mqf2vxb::Point> packetPoint(const mqf2vxb::VxbFile& file,
                                          const mqf2vxb::PointSection& section, bool shared,
                                          std::uint32_t index);

}  // namespace vxbtool
