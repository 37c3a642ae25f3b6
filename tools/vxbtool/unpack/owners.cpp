#include "vxbtool/unpack/owners.h"

#include <algorithm>
#include <utility>

#include "vxb/packet_decoder.h"
#include "vxbtool/unpack/packet_bodies.h"
#include "vxbtool/unpack/packet_polygon_kind.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::PrimitiveHeader;
using mqf2vxb::PrimitiveHeaderKind;
using mqf2vxb::VxbFile;

/// The coordinate of every primitive header. Of one that no block leads to it is 0, whose vertices no
/// assignment has to name.
std::vector<std::uint32_t> headerCoordinates(const VxbFile& file) {
    std::vector<std::uint32_t> result;
    for (std::size_t i = 0; i < file.primitiveHeaders.size(); ++i) {
        const PrimitiveHeader& header = file.primitiveHeaders[i];
        const bool chained = i > 0 && header.kind == PrimitiveHeaderKind::sharedVertices &&
                             file.words[file.primitiveHeaders[i - 1].offset] == header.offset;
        result.push_back(header.coordinate.value_or(chained ? result.back() : 0));
    }
    return result;
}

}  // namespace

Owners::Owners(const VxbFile& file)
    : singles_(file.coordinates.size() + 1, none),
      listOfGroup_(file.packetGroups.size(), none),
      listOfVertex_(std::size_t{file.vertices.independent.number} + file.vertices.shared.number,
                    none),
      sharedNormals_(file.normals.shared.number) {
    const std::vector<std::uint32_t> coordinates = headerCoordinates(file);
    findShared(file, coordinates);
    findBodies(file, coordinates);
    findVertices(file);
}

std::uint32_t Owners::add(std::vector<std::uint32_t> list) {
    lists_.push_back(std::move(list));
    return static_cast<std::uint32_t>(lists_.size() - 1);
}

std::uint32_t Owners::single(std::uint32_t coordinate) {
    std::uint32_t& list = singles_[std::min<std::size_t>(coordinate, singles_.size() - 1)];
    if (list == none) {
        list = add({coordinate});
    }
    return list;
}

void Owners::findShared(const VxbFile& file, const std::vector<std::uint32_t>& coordinates) {
    std::vector<std::uint32_t> gap;  // coordinates that draw and have no shared vertices
    std::uint32_t normal = 0;
    const auto put = [&](std::uint64_t end, const std::vector<std::uint32_t>& candidates) {
        const auto first = static_cast<std::uint32_t>(candidates_.size());
        const std::uint64_t last = std::min<std::uint64_t>(end, sharedNormals_.size());
        if (normal >= last) {
            return;
        }
        if (candidates.size() == 1 && &candidates == &gap) {
            normalOwners_.insert(candidates.front());
        }
        candidates_.insert(candidates_.end(), candidates.begin(), candidates.end());
        for (; normal < last; ++normal) {
            sharedNormals_[normal] = {first, static_cast<std::uint32_t>(candidates_.size())};
        }
    };
    for (std::size_t h = 0; h < coordinates.size(); ++h) {
        const PrimitiveHeader& header = file.primitiveHeaders[h];
        const std::uint32_t coordinate = coordinates[h];
        if (header.kind == PrimitiveHeaderKind::independent) {
            gap.push_back(coordinate);
        }
        if (header.kind != PrimitiveHeaderKind::sharedVertices) {
            continue;
        }
        const std::uint64_t first =
            std::uint64_t{file.vertices.independent.number} + header.vertices.source;
        const std::uint64_t end =
            std::min<std::uint64_t>(first + header.vertices.number, listOfVertex_.size());
        for (std::uint64_t vertex = first; vertex < end; ++vertex) {
            listOfVertex_[vertex] = single(coordinate);
        }
        if (!gap.empty() && gap.back() == coordinate) {
            gap.pop_back();
        }
        put(header.normals.source, gap);
        put(std::uint64_t{header.normals.source} + header.normals.number, {coordinate});
        gap.clear();
    }
    put(sharedNormals_.size(), gap);
}

void Owners::findBodies(const VxbFile& file, const std::vector<std::uint32_t>& coordinates) {
    BodyHints hints{coordinates, {}, std::move(normalOwners_)};
    for (const std::uint32_t list : listOfVertex_) {
        hints.coordinateOfVertex.push_back(list == none ? none : lists_[list].front());
    }
    for (PacketBody& body : packetBodies(file, std::move(hints))) {
        const std::uint32_t list =
            body.list.size() == 1 ? single(body.list.front()) : add(std::move(body.list));
        for (std::size_t g = body.first; g < body.end; ++g) {
            listOfGroup_[g] = list;
        }
    }
}

void Owners::findVertices(const VxbFile& file) {
    // The first vertex of a polygon has the list of its group; the others have at least its first
    // coordinate, and so has, as a rule, what else a strip brings.
    enum Pass { exact, sameFirst, strip, passNum };
    for (int pass = exact; pass < passNum; ++pass) {
        for (std::size_t g = 0; g < file.packetGroups.size(); ++g) {
            if (listOfGroup_[g] == none) {
                continue;
            }
            mqf2vxb::forEachPolygon(
                file, file.packetGroups[g], [&](const mqf2vxb::PacketPolygon& polygon) {
                    if ((polygon.place > 0) != (pass == strip)) {
                        return;
                    }
                    const std::size_t corners = pass == exact ? 1 : cornersOf(file, polygon, false);
                    for (std::size_t i = 0; i < corners; ++i) {
                        const std::uint32_t vertex = polygon.vertex(i);
                        if (vertex < listOfVertex_.size() && listOfVertex_[vertex] == none) {
                            listOfVertex_[vertex] = listOfGroup_[g];
                        }
                    }
                });
        }
    }
}

}  // namespace vxbtool::unpack
