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

using Matrix = std::array<double, 9>;

/// The product, the largest of whose numbers is 1, so that deep hierarchies keep within numbers.
Matrix product(const Matrix& outer, const Matrix& inner) {
    Matrix result{};
    double largest = 0;
    for (std::size_t i = 0; i < result.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            result[i] += outer[i / 3 * 3 + k] * inner[k * 3 + i % 3];
        }
        largest = std::max(largest, std::abs(result[i]));
    }
    for (double& value : result) {
        value /= largest > 0 ? largest : 1;
    }
    return result;
}

bool isMirror(const Matrix& m) {
    // As exact as pictures are: what has no depth mirrors nothing.
    constexpr double slight = 1e-6;
    const auto minor = [&](std::size_t a, std::size_t b) {
        return m[3 + a] * m[6 + b] - m[3 + b] * m[6 + a];
    };
    const auto length = [&](std::size_t i) { return std::hypot(m[i], m[i + 3], m[i + 6]); };
    const double volume = m[0] * minor(1, 2) - m[1] * minor(0, 2) + m[2] * minor(0, 1);
    return volume < -slight * length(0) * length(1) * length(2);
}

}  // namespace

std::vector<bool> mirroringCoordinates(const VxbFile& file) {
    const std::vector<Coordinate>& coordinates = file.coordinates;
    std::vector<Matrix> inModel(coordinates.size());
    std::vector<bool> done(coordinates.size());
    std::vector<bool> mirrors(coordinates.size());
    std::vector<std::size_t> ahead;
    for (std::size_t start = 0; start < coordinates.size(); ++start) {
        for (std::optional<std::size_t> c = start; c && !done[*c]; c = coordinates[*c].parent) {
            done[*c] = true;
            ahead.push_back(*c);
        }
        for (; !ahead.empty(); ahead.pop_back()) {
            const Coordinate& coordinate = coordinates[ahead.back()];
            Matrix& matrix = inModel[ahead.back()];
            std::copy(coordinate.matrix.begin(), coordinate.matrix.end(), matrix.begin());
            matrix = product(coordinate.parent ? inModel[*coordinate.parent]
                                               : Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1},
                             matrix);
            mirrors[ahead.back()] = isMirror(matrix);
        }
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
