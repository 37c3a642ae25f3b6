#include "vxbtool/unpack/owners.h"

#include <algorithm>
#include <set>

#include "vxb/packet_decoder.h"
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

/// The headers that name an independent group.
struct Owners::GroupHeaders {
    std::vector<std::uint32_t> headers;  ///< in file order, one as often as it names the group
    std::uint32_t next = none;           ///< the group that its first header names behind it
    std::uint32_t evidence = none;       ///< first coordinate of one of its vertices
};

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
    std::vector<GroupHeaders> groups(file.packetGroups.size());
    for (std::uint32_t h = 0; h < coordinates.size(); ++h) {
        const PrimitiveHeader& header = file.primitiveHeaders[h];
        if (header.kind != PrimitiveHeaderKind::independent) {
            continue;
        }
        const std::uint32_t end = header.firstDescription + header.descriptionNum;
        for (std::uint32_t d = header.firstDescription; d < end; ++d) {
            if (const auto group = file.descriptions[d].group) {
                GroupHeaders& named = groups[*group];
                if (named.headers.empty() && d + 1 < end) {
                    named.next = file.descriptions[d + 1].group.value_or(none);
                }
                named.headers.push_back(h);
            }
        }
    }

    // What is known of vertices by groups of one coordinate.
    std::vector<std::uint32_t> firstOf(listOfVertex_.size(), none);
    for (std::uint32_t v = 0; v < firstOf.size(); ++v) {
        firstOf[v] = listOfVertex_[v] == none ? none : lists_[listOfVertex_[v]].front();
    }
    const auto forVertices = [&](std::size_t g, auto use) {
        mqf2vxb::forEachPolygon(
            file, file.packetGroups[g], [&](const mqf2vxb::PacketPolygon& polygon) {
                const std::size_t corners = polygon.place > 0 ? 0 : cornersOf(file, polygon, false);
                for (std::size_t i = 0; i < corners; ++i) {
                    if (polygon.vertex(i) < firstOf.size()) {
                        use(firstOf[polygon.vertex(i)]);
                    }
                }
            });
    };
    for (std::size_t g = 0; g < groups.size(); ++g) {
        if (groups[g].headers.size() == 1 && !file.packetGroups[g].shared) {
            normalOwners_.erase(coordinates[groups[g].headers.front()]);
            forVertices(
                g, [&](std::uint32_t& first) { first = coordinates[groups[g].headers.front()]; });
        }
    }
    for (std::size_t g = 0; g < groups.size(); ++g) {
        if (groups[g].headers.size() > 1) {
            forVertices(g, [&](std::uint32_t first) {
                groups[g].evidence = first != none ? first : groups[g].evidence;
            });
        }
    }

    // Groups of the same headers that use one vertex have the same first coordinate, so they are, as
    // a rule, of one body.
    std::vector<std::uint32_t> usedIn(listOfVertex_.size(), none);
    std::vector<std::uint32_t> laterOfBody(groups.size(), none);
    for (std::uint32_t g = 0; g < groups.size(); ++g) {
        if (groups[g].headers.size() < 2) {
            continue;
        }
        const auto use = [&](std::uint32_t& before) {
            if (before != none && before != g && groups[before].headers == groups[g].headers) {
                laterOfBody[before] = g;
            }
            before = g;
        };
        mqf2vxb::forEachPolygon(
            file, file.packetGroups[g], [&](const mqf2vxb::PacketPolygon& polygon) {
                const std::size_t corners = polygon.place > 0 ? 0 : cornersOf(file, polygon, false);
                for (std::size_t i = 0; i < corners; ++i) {
                    if (polygon.vertex(i) < usedIn.size()) {
                        use(usedIn[polygon.vertex(i)]);
                    }
                }
            });
    }
    // Whether a group is of a body that has another group of a type which is taken.
    const auto belongsElsewhere = [&](std::size_t group,
                                      const std::set<mqf2vxb::PrimitiveTypeCode>& types) {
        for (std::uint32_t g = laterOfBody[group]; g != none; g = laterOfBody[g]) {
            if (types.contains(file.packetGroups[g].code)) {
                return true;
            }
        }
        return false;
    };

    // Bodies of the same headers have their coordinates in different orders.
    std::set<std::vector<std::uint32_t>> used;
    for (std::size_t g = 0; g < groups.size();) {
        GroupHeaders& first = groups[g];
        if (first.headers.empty()) {
            ++g;
            continue;
        }
        std::set<mqf2vxb::PrimitiveTypeCode> types;
        std::uint32_t evidence = none;
        std::size_t end = g;
        while (end < groups.size() && groups[end].headers == first.headers &&
               (end == g || groups[end - 1].next == end) &&
               (evidence == none || groups[end].evidence == none ||
                evidence == groups[end].evidence) &&
               (end == g || !belongsElsewhere(end, types)) &&
               types.insert(file.packetGroups[end].code).second) {
            evidence = groups[end].evidence != none ? groups[end].evidence : evidence;
            ++end;
        }
        std::uint32_t list = none;
        if (first.headers.size() == 1) {
            list = single(coordinates[first.headers.front()]);
        } else {
            constexpr int mostOrders = 1000;
            std::vector<std::uint32_t> candidate = first.headers;
            // Where nothing else tells, a coordinate that owns shared normals without shared vertices
            // has them from polygons that lie in it first.
            if (evidence == none) {
                const auto owner = std::ranges::find_if(candidate, [&](std::uint32_t header) {
                    return normalOwners_.contains(coordinates[header]);
                });
                if (owner != candidate.end()) {
                    evidence = coordinates[*owner];
                }
            }
            for (int tries = 0; tries < mostOrders; ++tries) {
                const bool fits = evidence == none || coordinates[candidate.front()] == evidence;
                if (fits && !used.contains(candidate)) {
                    break;
                }
                if (!std::next_permutation(candidate.begin(), candidate.end())) {
                    break;
                }
            }
            used.insert(candidate);
            for (std::uint32_t& entry : candidate) {
                entry = coordinates[entry];
            }
            list = add(std::move(candidate));
        }
        for (; g < end; ++g) {
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
