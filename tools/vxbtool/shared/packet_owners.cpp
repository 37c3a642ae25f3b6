#include "vxbtool/shared/packet_owners.h"

#include <algorithm>
#include <array>
#include <cmath>
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

namespace {

/// 1 or -1 for a matrix that mirrors, 0 for one without depth.
int senseOf(const std::array<std::int16_t, 9>& matrix) {
    std::array<double, 9> m{};
    std::copy(matrix.begin(), matrix.end(), m.begin());
    // As exact as pictures are.
    constexpr double slight = 1e-6;
    const auto minor = [&](std::size_t a, std::size_t b) {
        return m[3 + a] * m[6 + b] - m[3 + b] * m[6 + a];
    };
    const auto length = [&](std::size_t column) {
        return std::hypot(m[column], m[column + 3], m[column + 6]);
    };
    const double volume = m[0] * minor(1, 2) - m[1] * minor(0, 2) + m[2] * minor(0, 1);
    const double least = slight * length(0) * length(1) * length(2);
    if (std::abs(volume) <= least) {
        return 0;
    }
    return volume > 0 ? 1 : -1;
}

}  // namespace

std::vector<bool> mirroringCoordinates(const VxbFile& file) {
    const std::vector<Coordinate>& coordinates = file.coordinates;
    std::vector<int> senses;
    senses.reserve(coordinates.size());
    for (const Coordinate& coordinate : coordinates) {
        senses.push_back(senseOf(coordinate.matrix));
    }
    // Two mirrors make none, and what lost its depth stays flat.
    std::vector<bool> done(coordinates.size());
    std::vector<std::size_t> ahead;
    for (std::size_t start = 0; start < coordinates.size(); ++start) {
        for (std::optional<std::size_t> c = start; c && !done[*c]; c = coordinates[*c].parent) {
            done[*c] = true;
            ahead.push_back(*c);
        }
        for (; !ahead.empty(); ahead.pop_back()) {
            const std::size_t c = ahead.back();
            if (const auto parent = coordinates[c].parent) {
                senses[c] *= senses[*parent];
            }
        }
    }
    std::vector<bool> mirrors;
    mirrors.reserve(senses.size());
    for (const int sense : senses) {
        mirrors.push_back(sense < 0);
    }
    return mirrors;
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
