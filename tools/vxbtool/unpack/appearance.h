#pragma once

#include <cstdint>

#include "model/geometry.h"
#include "vxb/packet_decoder.h"
#include "vxb/vxb_file.h"
#include "vxbtool/unpack/point_numbers.h"

namespace vxbtool::unpack {

/// A polygon's letters, flag and shape, before its numbers.
struct Appearance {
    std::uint32_t flag = 0;
    char shading = 'F';
    char kind = 'C';
    std::int32_t type = mqf2vxb::polygon_type::triangle;

    [[nodiscard]] bool lit() const;
};

/// What makes this polygon of a group's packets. Of the further polygons of a strip, the drawing code
/// and the normals tell as much as the packet has of them.
Appearance appearanceOf(const mqf2vxb::VxbFile& file, const mqf2vxb::PacketGroup& group,
                        const mqf2vxb::PacketPolygon& polygon, const PointNumbers& points);

}  // namespace vxbtool::unpack
