#pragma once

#include <cstddef>
#include <cstdint>

#include "vxb/packet_decoder.h"

namespace vxbtool::unpack {

/// The type that a packet's polygon has in the GEO file. A strip may hold lines and sprites, which
/// its drawing codes tell; where it has none, vertices that are not there do. `shared` packets count
/// their vertices in the shared block.
std::int32_t polygonTypeOf(const mqf2vxb::VxbFile& file, const mqf2vxb::PacketPolygon& polygon,
                           bool shared);

/// How many of its corners are vertices.
std::size_t cornersOf(const mqf2vxb::VxbFile& file, const mqf2vxb::PacketPolygon& polygon,
                      bool shared);

}  // namespace vxbtool::unpack
