#include "vxbtool/unpack/packet_bodies.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "vxb/packet_decoder.h"
#include "vxbtool/unpack/packet_polygon_kind.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::PrimitiveHeader;
using mqf2vxb::VxbFile;
using Types = std::set<mqf2vxb::PrimitiveTypeCode>;

constexpr std::uint32_t unknown = 0xFFFFFFFFU;  // group or coordinate

/// The headers that name an independent group.
struct GroupHeaders {
    std::vector<std::uint32_t> headers;       ///< in file order, one as often as it names the group
    std::uint32_t next = unknown;             ///< the group that its first header names behind it
    std::uint32_t evidence = unknown;         ///< first coordinate of one of its vertices
    std::uint32_t later = unknown;            ///< a later group that, as a rule, is of its body
    std::shared_ptr<const Types> laterTypes;  ///< of that one and of those behind it; null for none
};

class BodyFinder {
public:
    BodyFinder(const VxbFile& file, BodyHints hints)
        : file_(file), hints_(std::move(hints)), groups_(file.packetGroups.size()) {
        readHeaders();
        findEvidence();
        linkGroups();
        findLaterTypes();
    }

    std::vector<PacketBody> bodies() {
        std::vector<PacketBody> result;
        for (std::size_t g = 0; g < groups_.size();) {
            if (groups_[g].headers.empty()) {
                ++g;
                continue;
            }
            PacketBody body{g, g, {}};
            const std::uint32_t evidence = extend(body);
            body.list = listOf(groups_[g].headers, evidence);
            g = body.end;
            result.push_back(std::move(body));
        }
        return result;
    }

private:
    void readHeaders() {
        for (std::uint32_t h = 0; h < hints_.coordinateOfHeader.size(); ++h) {
            const PrimitiveHeader& header = file_.primitiveHeaders[h];
            if (header.kind != mqf2vxb::PrimitiveHeaderKind::independent) {
                continue;
            }
            const std::uint32_t end = header.firstDescription + header.descriptionNum;
            for (std::uint32_t d = header.firstDescription; d < end; ++d) {
                const auto group = file_.descriptions[d].group;
                if (!group) {
                    continue;
                }
                GroupHeaders& named = groups_[*group];
                if (named.headers.empty() && d + 1 < end) {
                    named.next = file_.descriptions[d + 1].group.value_or(unknown);
                }
                named.headers.push_back(h);
            }
        }
    }

    template <class Use>
    void forVertices(std::size_t group, Use use) const {
        mqf2vxb::forEachPolygon(file_, file_.packetGroups[group],
                                [&](const mqf2vxb::PacketPolygon& polygon) {
                                    const std::size_t corners =
                                        polygon.place > 0 ? 0 : cornersOf(file_, polygon, false);
                                    for (std::size_t i = 0; i < corners; ++i) {
                                        if (polygon.vertex(i) < hints_.coordinateOfVertex.size()) {
                                            use(polygon.vertex(i));
                                        }
                                    }
                                });
    }

    /// What groups of one coordinate tell of the vertices, and these of the other groups.
    void findEvidence() {
        std::vector<std::uint32_t>& firstOf = hints_.coordinateOfVertex;
        for (std::size_t g = 0; g < groups_.size(); ++g) {
            if (groups_[g].headers.size() == 1 && !file_.packetGroups[g].shared) {
                const std::uint32_t only = hints_.coordinateOfHeader[groups_[g].headers.front()];
                hints_.normalOwners.erase(only);
                forVertices(g, [&](std::uint32_t vertex) { firstOf[vertex] = only; });
            }
        }
        for (std::size_t g = 0; g < groups_.size(); ++g) {
            std::uint32_t& evidence = groups_[g].evidence;
            if (groups_[g].headers.size() > 1) {
                forVertices(g, [&](std::uint32_t vertex) {
                    evidence = firstOf[vertex] != unknown ? firstOf[vertex] : evidence;
                });
            }
        }
    }

    /// Groups of the same headers that use one vertex have the same first coordinate, so they are, as
    /// a rule, of one body.
    void linkGroups() {
        std::vector<std::uint32_t> usedIn(hints_.coordinateOfVertex.size(), unknown);
        for (std::uint32_t g = 0; g < groups_.size(); ++g) {
            if (groups_[g].headers.size() < 2) {
                continue;
            }
            forVertices(g, [&](std::uint32_t vertex) {
                const std::uint32_t before = std::exchange(usedIn[vertex], g);
                if (before != unknown && before != g &&
                    groups_[before].headers == groups_[g].headers) {
                    groups_[before].later = g;
                }
            });
        }
    }

    /// Sets grow toward the front of a chain, and equal ones are kept once: there are few types.
    void findLaterTypes() {
        for (std::size_t g = groups_.size(); g-- > 0;) {
            if (groups_[g].later == unknown) {
                continue;
            }
            const mqf2vxb::PrimitiveTypeCode type = file_.packetGroups[groups_[g].later].code;
            std::shared_ptr<const Types> types = groups_[groups_[g].later].laterTypes;
            if (types == nullptr || !types->contains(type)) {
                auto more = std::make_shared<Types>(types == nullptr ? Types() : *types);
                more->insert(type);
                types = std::move(more);
            }
            groups_[g].laterTypes = std::move(types);
        }
    }

    /// Adds the groups to a body that follow its first one; returns its evidence.
    std::uint32_t extend(PacketBody& body) const {
        Types types{file_.packetGroups[body.first].code};
        std::uint32_t evidence = groups_[body.first].evidence;
        body.end = body.first + 1;
        while (goesOn(body, evidence, types)) {
            types.insert(file_.packetGroups[body.end].code);
            evidence =
                groups_[body.end].evidence != unknown ? groups_[body.end].evidence : evidence;
            ++body.end;
        }
        return evidence;
    }

    [[nodiscard]] bool goesOn(const PacketBody& body, std::uint32_t evidence,
                              const Types& types) const {
        if (body.end == groups_.size() || groups_[body.end - 1].next != body.end) {
            return false;
        }
        const GroupHeaders& next = groups_[body.end];
        const bool agrees =
            evidence == unknown || next.evidence == unknown || evidence == next.evidence;
        return agrees && next.headers == groups_[body.first].headers &&
               !types.contains(file_.packetGroups[body.end].code) &&
               !belongsElsewhere(body.end, types);
    }

    /// Whether a group is of a body that has another group of a type which is taken.
    [[nodiscard]] bool belongsElsewhere(std::size_t group, const Types& types) const {
        const std::shared_ptr<const Types>& later = groups_[group].laterTypes;
        return later != nullptr &&
               std::ranges::any_of(types, [&](auto type) { return later->contains(type); });
    }

    /// The coordinates of these headers, in an order that no other body has.
    std::vector<std::uint32_t> listOf(std::vector<std::uint32_t> headers, std::uint32_t evidence) {
        const auto coordinate = [&](std::uint32_t header) {
            return hints_.coordinateOfHeader[header];
        };
        // Where nothing else tells, a coordinate that owns shared normals without shared vertices has
        // them from polygons that lie in it first.
        if (evidence == unknown && headers.size() > 1) {
            const auto owner = std::ranges::find_if(headers, [&](std::uint32_t header) {
                return hints_.normalOwners.contains(coordinate(header));
            });
            evidence = owner != headers.end() ? coordinate(*owner) : unknown;
        }
        constexpr int mostOrders = 1000;
        for (int tries = 0; headers.size() > 1 && tries < mostOrders; ++tries) {
            const bool fits = evidence == unknown || coordinate(headers.front()) == evidence;
            if ((fits && !used_.contains(headers)) ||
                !std::next_permutation(headers.begin(), headers.end())) {
                break;
            }
        }
        used_.insert(headers);
        std::ranges::transform(headers, headers.begin(), coordinate);
        return headers;
    }

    const VxbFile& file_;
    BodyHints hints_;
    std::vector<GroupHeaders> groups_;
    std::set<std::vector<std::uint32_t>> used_;  // headers of the lists so far
};

}  // namespace

std::vector<PacketBody> packetBodies(const VxbFile& file, BodyHints hints) {
    return BodyFinder(file, std::move(hints)).bodies();
}

}  // namespace vxbtool::unpack
