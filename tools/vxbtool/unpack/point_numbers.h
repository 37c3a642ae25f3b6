#pragma once

#include <cstdint>

#include "model/geometry.h"
#include "vxb/vxb_file.h"

namespace vxbtool::unpack {

/// How the vertices and normals of packets are numbered, and how in the GEO file: the independent
/// ones, then the shared ones, which the packets of shared polygons count by themselves.
class PointNumbers {
public:
    explicit PointNumbers(const mqf2vxb::VxbFile& file)
        : vertices_{file.vertices.independent.number, file.vertices.shared.number},
          normals_{file.normals.independent.number, file.normals.shared.number} {}

    [[nodiscard]] std::uint32_t independentVertices() const { return vertices_.independent; }
    [[nodiscard]] std::uint32_t sharedVertices() const { return vertices_.shared; }
    [[nodiscard]] std::uint32_t vertices() const { return vertices_.all(); }
    [[nodiscard]] std::uint32_t sharedNormals() const { return normals_.shared; }
    [[nodiscard]] std::uint32_t normals() const { return normals_.all(); }

    /// The number in the GEO file of what a packet's polygon of this type names. The gathering
    /// renumbers no lines.
    [[nodiscard]] std::uint32_t geoVertex(std::uint32_t vertex, bool shared,
                                          std::int32_t type) const {
        return vertices_.inGeo(vertex, shared, type);
    }
    [[nodiscard]] std::uint32_t geoNormal(std::uint32_t normal, bool shared,
                                          std::int32_t type) const {
        return normals_.inGeo(normal, shared, type);
    }
    /// A vertex of the shared block as a polygon of this type names it in a packet.
    [[nodiscard]] std::uint32_t packetVertex(std::uint32_t sharedVertex, std::int32_t type) const {
        return type < mqf2vxb::polygon_type::line ? sharedVertex
                                                  : vertices_.independent + sharedVertex;
    }
    /// Whether a lit polygon may name this normal of its packet.
    [[nodiscard]] bool isNormal(std::uint32_t normal, bool shared) const {
        return normals() == 0 || normal < (shared ? normals_.shared : normals());
    }

private:
    struct Numbers {
        std::uint32_t independent;
        std::uint32_t shared;

        [[nodiscard]] std::uint32_t all() const { return independent + shared; }
        [[nodiscard]] std::uint32_t inGeo(std::uint32_t index, bool ofShared,
                                          std::int32_t type) const {
            return ofShared && type < mqf2vxb::polygon_type::line && index < shared
                       ? independent + index
                       : index;
        }
    };
    Numbers vertices_;
    Numbers normals_;
};

}  // namespace vxbtool::unpack
