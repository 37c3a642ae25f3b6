#include "vxbtool/shared/packet_owners.h"

#include <algorithm>
#include <cstddef>

namespace vxbtool {

using namespace mqf2vxb;

std::vector<std::vector<std::uint32_t>> listingsOfGroups(const VxbFile& file) {
    std::vector<std::vector<std::uint32_t>> owners(file.packetGroups.size());
    for (const PrimitiveHeader& header : file.primitiveHeaders) {
        for (std::uint32_t i = 0; header.coordinate && i < header.descriptionNum; ++i) {
            const TypeDescription& description = file.descriptions[header.firstDescription + i];
            if (description.group && !file.packetGroups[*description.group].shared) {
                owners[*description.group].push_back(*header.coordinate);
            }
        }
    }
    for (std::vector<std::uint32_t>& of : owners) {
        std::sort(of.begin(), of.end());
    }
    return owners;
}

std::vector<std::vector<std::uint32_t>> ownersOfGroups(const VxbFile& file) {
    std::vector<std::vector<std::uint32_t>> owners = listingsOfGroups(file);
    for (std::vector<std::uint32_t>& of : owners) {
        of.erase(std::unique(of.begin(), of.end()), of.end());
    }
    return owners;
}

SharedOwners::SharedOwners(const VxbFile& file)
    : vertices(file.vertices.shared.number), normals(file.normals.shared.number) {
    struct Owned {
        SharedRange range;
        std::uint32_t coordinate;
    };
    // Ranges of a damaged file may overlap: a point belongs to the range that begins first.
    const auto own = [](std::vector<std::optional<std::uint32_t>>& points,
                        std::vector<Owned>& ranges) {
        std::stable_sort(ranges.begin(), ranges.end(), [](const Owned& a, const Owned& b) {
            return a.range.source < b.range.source;
        });
        std::uint64_t next = 0;
        for (const Owned& owned : ranges) {
            const std::uint64_t end = std::min<std::uint64_t>(
                std::uint64_t{owned.range.source} + owned.range.number, points.size());
            for (next = std::max<std::uint64_t>(next, owned.range.source); next < end; ++next) {
                points[next] = owned.coordinate;
            }
        }
    };
    std::vector<Owned> vertexRanges;
    std::vector<Owned> normalRanges;
    for (const PrimitiveHeader& header : file.primitiveHeaders) {
        if (header.kind == PrimitiveHeaderKind::sharedVertices && header.coordinate) {
            vertexRanges.push_back({header.vertices, *header.coordinate});
            normalRanges.push_back({header.normals, *header.coordinate});
        }
    }
    own(vertices, vertexRanges);
    own(normals, normalRanges);
}

std::optional<Point> packetPoint(const VxbFile& file, const PointSection& section, bool shared,
                                 std::uint32_t index) {
    if (!shared && index < section.independent.number) {
        return file.point(section.independent, index);
    }
    const std::uint32_t inShared = shared ? index : index - section.independent.number;
    if (inShared < section.shared.number) {
        return file.point(section.shared, inShared);
    }
    return std::nullopt;
}

}  // namespace vxbtool
