#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool::unpack {

/// Which coordinates the groups of packets, the vertices and the shared normals lie in, found again
/// from the headers that name the groups and from the vertices that the packets name. Vertices are
/// counted as the GEO file of the result has them: the independent ones, then the shared ones.
class Owners {
public:
    explicit Owners(const mqf2vxb::VxbFile& file);

    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// The distinct coordinate lists.
    [[nodiscard]] const std::vector<std::vector<std::uint32_t>>& lists() const { return lists_; }
    /// List of an independent packet group; groups of one body have the same.
    [[nodiscard]] std::uint32_t listOfGroup(std::uint32_t group) const {
        return listOfGroup_[group];
    }
    /// List of a vertex; `none` when no packet tells, and for a strip's field that names no vertex.
    [[nodiscard]] std::uint32_t listOf(std::uint32_t vertex) const {
        return vertex < listOfVertex_.size() ? listOfVertex_[vertex] : none;
    }
    /// First coordinate of a vertex; 0 when it has no list.
    [[nodiscard]] std::uint32_t coordinateOf(std::uint32_t vertex) const {
        const std::uint32_t list = listOf(vertex);
        return list == none ? 0 : lists_[list].front();
    }
    /// The coordinates under which a shared normal may have been gathered, in the order of their
    /// headers: one where a header counts the normal, else those that have no shared vertices.
    [[nodiscard]] std::span<const std::uint32_t> candidates(std::uint32_t sharedNormal) const {
        const Range& range = sharedNormals_[sharedNormal];
        return std::span(candidates_).subspan(range.first, range.end - range.first);
    }

private:
    void findShared(const mqf2vxb::VxbFile& file, const std::vector<std::uint32_t>& coordinates);
    void findBodies(const mqf2vxb::VxbFile& file, const std::vector<std::uint32_t>& coordinates);
    void findVertices(const mqf2vxb::VxbFile& file);
    std::uint32_t add(std::vector<std::uint32_t> list);
    std::uint32_t single(std::uint32_t coordinate);

    std::vector<std::vector<std::uint32_t>> lists_;
    std::vector<std::uint32_t> singles_;      // the list of one coordinate, by coordinate
    std::vector<std::uint32_t> listOfGroup_;  // of an independent group
    std::vector<std::uint32_t> listOfVertex_;
    struct Range {
        std::uint32_t first = 0;
        std::uint32_t end = 0;
    };
    std::vector<Range> sharedNormals_;
    std::vector<std::uint32_t> candidates_;
    std::set<std::uint32_t> normalOwners_;  // coordinates that are the only candidates of some
};

}  // namespace vxbtool::unpack
