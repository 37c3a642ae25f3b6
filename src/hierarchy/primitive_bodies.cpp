#include "hierarchy/primitive_bodies.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <unordered_map>

namespace mqf2vxb {
namespace {

/// Gathers materials or meshes, the items, into packet groups: the type entries of the bodies.
class BodyBuilder {
public:
    BodyBuilder(Primitives& primitives, const CoordinateLists& lists)
        : primitives_(primitives), bodyOfList_(lists.size(), none) {}

    /// Makes the bodies of all items; returns whether the last one is the shared body. The order
    /// of bodies and entries is that of first appearance, shared items after the others.
    template <class Item>
    bool build(const Table<Item>& items) {
        groupOfItem_.resize(items.size());
        addItems(items, false);
        sharedBody_ = static_cast<std::uint32_t>(primitives_.malprim.size());
        addItems(items, true);
        numberEntries();
        listMembers();
        return primitives_.malprim.size() > sharedBody_;
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// Where a packet group's entry is, and where its next member goes.
    struct Group {
        std::uint32_t body;
        std::uint32_t entry;
        std::uint32_t nextMember;
    };

    template <class Item>
    void addItems(const Table<Item>& items, bool sharedOnes) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if ((items[i].cno == CoordinateListId::shared) == sharedOnes) {
                const std::uint32_t body = bodyOf(items[i].cno);
                groupOfItem_[i] = groupOf(body, items[i].type);
                const Group& group = groups_[groupOfItem_[i]];
                ++primitives_.malprim[body].maltype[group.entry].polyNum;
            }
        }
    }

    std::uint32_t bodyOf(CoordinateListId list) {
        std::uint32_t& body = list == CoordinateListId::shared
                                  ? bodyOfShared_
                                  : bodyOfList_[static_cast<std::size_t>(list)];
        if (body == none) {
            body = static_cast<std::uint32_t>(primitives_.malprim.size());
            primitives_.malprim.append({list, {}});
        }
        return body;
    }

    std::uint32_t groupOf(std::uint32_t body, PrimitiveTypeCode type) {
        const std::uint64_t key = static_cast<std::uint64_t>(body) << 32U | type;
        const auto [place, isNew] =
            groupOfKey_.try_emplace(key, static_cast<std::uint32_t>(groups_.size()));
        if (isNew) {
            std::vector<PrimitiveTypeEntry>& entries = primitives_.malprim[body].maltype;
            groups_.push_back({body, static_cast<std::uint32_t>(entries.size()), 0});
            entries.push_back({0, type, 0, 0});
        }
        return place->second;
    }

    void numberEntries() {
        std::uint32_t primIndex = 0;
        std::uint32_t member = 0;
        for (std::size_t body = 0; body < primitives_.malprim.size(); ++body) {
            if (body == sharedBody_) {
                primIndex = 0;
            }
            for (PrimitiveTypeEntry& entry : primitives_.malprim[body].maltype) {
                entry.primIndex = primIndex++;
                entry.firstMember = member;
                member += entry.polyNum;
            }
        }
    }

    void listMembers() {
        for (Group& group : groups_) {
            group.nextMember = primitives_.malprim[group.body].maltype[group.entry].firstMember;
        }
        primitives_.members.resize(groupOfItem_.size());
        for (std::size_t i = 0; i < groupOfItem_.size(); ++i) {
            primitives_.members[groups_[groupOfItem_[i]].nextMember++] =
                static_cast<std::uint32_t>(i);
        }
    }

    Primitives& primitives_;
    std::vector<std::uint32_t> bodyOfList_;
    std::uint32_t bodyOfShared_ = none;
    std::uint32_t sharedBody_ = 0;  // the first body behind the independent ones
    std::vector<Group> groups_;
    std::unordered_map<std::uint64_t, std::uint32_t> groupOfKey_;
    std::vector<std::uint32_t> groupOfItem_;
};

/// The headers by their coordinate.
class HeaderIndex {
public:
    explicit HeaderIndex(Table<CoordinatePrimitiveHeader>& malprimh) : malprimh_(malprimh) {
        for (std::size_t i = 0; i < malprimh.size(); ++i) {
            headerOf_[malprimh[i].coord] = i;
        }
    }

    /// The coordinate's header, made at the end of the table when there is none.
    CoordinatePrimitiveHeader& header(std::int32_t coordinate) {
        const auto [place, isNew] = headerOf_.try_emplace(coordinate, malprimh_.size());
        if (isNew) {
            malprimh_.append({coordinate, 0, 0, {}});
        }
        return malprimh_[place->second];
    }

private:
    Table<CoordinatePrimitiveHeader>& malprimh_;
    std::unordered_map<std::int32_t, std::size_t> headerOf_;
};

void buildPrimitiveHeaders(Primitives& primitives, const CoordinateLists& lists,
                           bool sharedExists) {
    const std::size_t independentCount = primitives.malprim.size() - (sharedExists ? 1 : 0);
    HeaderIndex headers(primitives.malprimh);
    for (std::size_t b = 0; b < independentCount; ++b) {
        const PrimitiveBody& body = primitives.malprim[b];
        for (const std::int32_t coordinate : lists.entries(body.cno)) {
            auto& maltype = headers.header(coordinate).maltype;
            maltype.insert(maltype.end(), body.maltype.begin(), body.maltype.end());
        }
    }
    if (sharedExists) {
        primitives.malsprimh = primitives.malprim[independentCount].maltype;
    }
}

/// A mesh of one polygon is written by its polygon, and these are written in material order.
void listSinglePolygons(const Table<MeshRecord>& meshes, Primitives& primitives) {
    for (const PrimitiveBody& body : primitives.malprim) {
        for (const PrimitiveTypeEntry& entry : body.maltype) {
            if (type_code::isStrip(entry.type)) {
                continue;
            }
            const std::span members(primitives.members.data() + entry.firstMember, entry.polyNum);
            for (std::uint32_t& member : members) {
                member = meshes[member].materials.front();
            }
            std::sort(members.begin(), members.end());
        }
    }
}

template <class Item>
void buildBodies(Model& model, const Table<Item>& items) {
    BodyBuilder builder(model.primitives, model.coordinateLists);
    const bool sharedExists = builder.build(items);
    buildPrimitiveHeaders(model.primitives, model.coordinateLists, sharedExists);
}

/// Counts the shared records of one table into the headers of their coordinates.
std::uint32_t countShared(const Table<VertexRecord>& records, const CoordinateLists& lists,
                          HeaderIndex& headers,
                          std::uint32_t CoordinatePrimitiveHeader::*perHeaderCount) {
    std::uint32_t total = 0;
    for (const VertexRecord& record : records) {
        if (record.shared) {
            // A shared vertex has one coordinate; a normal that an independent polygon gave more
            // is gathered under its first only.
            ++(headers.header(lists.first(record.cno)).*perHeaderCount);
            ++total;
        }
    }
    return total;
}

}  // namespace

void buildPrimitiveBodies(Model& model) { buildBodies(model, model.materials.records); }

void buildMeshPrimitiveBodies(Model& model) {
    buildBodies(model, model.meshes);
    listSinglePolygons(model.meshes, model.primitives);
}

void countSharedPerCoordinate(Model& model) {
    Primitives& primitives = model.primitives;
    HeaderIndex headers(primitives.malprimh);
    primitives.SharedVertexTotal = countShared(model.vertices, model.coordinateLists, headers,
                                               &CoordinatePrimitiveHeader::sharedVertexNum);
    primitives.SharedNormalTotal = countShared(model.normals, model.coordinateLists, headers,
                                               &CoordinatePrimitiveHeader::sharedNormalNum);
}

}  // namespace mqf2vxb
