#include "organise/primitive_bodies.h"

#include <cstdint>
#include <string>

#include "base/key_map.h"
#include "format/format.h"
#include "organise/limits.h"

namespace mqf2vxb {
namespace {

/// Gathers items, which are materials or meshes, into packet groups: the type entries of the bodies.
class BodyBuilder {
public:
    BodyBuilder(Primitives& primitives, const CoordinateLists& lists)
        : primitives_(primitives), bodyOfList_(lists.size(), none) {}

    /// Makes the bodies of all items and tells each item its group; returns whether the last body
    /// is the shared one. The order of bodies and entries is that of first appearance, shared
    /// items after the others.
    template <class Item>
    bool build(Table<Item>& items) {
        const bool sharedExists = addItems(items, false);
        sharedBody_ = static_cast<std::uint32_t>(primitives_.malprim.size());
        if (sharedExists) {
            addItems(items, true);
        }
        const std::vector<std::uint32_t> groupOfEntry = numberEntries();
        for (Item& item : items) {
            item.group = groupOfEntry[item.group];
        }
        return sharedExists;
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// A type entry by its place; entries are kept in the order in which they were made.
    struct EntryPlace {
        std::uint32_t body;
        std::uint32_t entry;
        std::uint32_t items;
    };

    /// Leaves in each item's group the number of its entry place. Returns whether there are items
    /// of the other sort.
    template <class Item>
    bool addItems(Table<Item>& items, bool sharedOnes) {
        bool others = false;
        for (Item& item : items) {
            if ((item.cno == CoordinateListId::shared) != sharedOnes) {
                others = true;
                continue;
            }
            item.group = entryOf(bodyOf(item.cno), item.type);
            ++entries_[item.group].items;
        }
        return others;
    }

    std::uint32_t bodyOf(CoordinateListId list) {
        std::uint32_t& body = list == CoordinateListId::shared
                                  ? bodyOfShared_
                                  : bodyOfList_[static_cast<std::size_t>(list)];
        if (body == none) {
            body = static_cast<std::uint32_t>(primitives_.malprim.size());
            primitives_.malprim.append({list});
        }
        return body;
    }

    std::uint32_t entryOf(std::uint32_t body, PrimitiveTypeCode type) {
        const std::uint64_t key = static_cast<std::uint64_t>(body) << 32U | type;
        return entryOfKey_.find(key, [&] { return newEntry(body, type); });
    }

    std::uint32_t newEntry(std::uint32_t body, PrimitiveTypeCode type) {
        Table<PrimitiveTypeEntry>& entries = primitives_.malprim[body].maltype;
        entries_.push_back({body, static_cast<std::uint32_t>(entries.size()), 0});
        entries.append({0, type, 0});
        return static_cast<std::uint32_t>(entries_.size() - 1);
    }

    /// Numbers the entries of the independent bodies and those of the shared body; returns the
    /// group of every entry place.
    std::vector<std::uint32_t> numberEntries() {
        std::vector<std::uint32_t> firstGroup;
        std::uint32_t groups = 0;
        for (std::size_t body = 0; body < primitives_.malprim.size(); ++body) {
            const std::uint32_t firstIndex = body == sharedBody_ ? groups : 0;
            firstGroup.push_back(groups);
            for (PrimitiveTypeEntry& entry : primitives_.malprim[body].maltype) {
                entry.primIndex = groups++ - firstIndex;
            }
        }
        std::vector<std::uint32_t> groupOfEntry;
        groupOfEntry.reserve(entries_.size());
        for (const EntryPlace& place : entries_) {
            primitives_.malprim[place.body].maltype[place.entry].polyNum = place.items;
            groupOfEntry.push_back(firstGroup[place.body] + place.entry);
        }
        return groupOfEntry;
    }

    Primitives& primitives_;
    std::vector<std::uint32_t> bodyOfList_;
    std::uint32_t bodyOfShared_ = none;
    std::uint32_t sharedBody_ = 0;  // the first body behind the independent ones
    std::vector<EntryPlace> entries_;
    KeyMap<std::uint64_t, std::uint32_t> entryOfKey_;
};

/// The headers by their coordinate.
class HeaderIndex {
public:
    explicit HeaderIndex(Table<CoordinatePrimitiveHeader>& malprimh) : malprimh_(malprimh) {
        for (std::size_t i = 0; i < malprimh.size(); ++i) {
            place(malprimh[i].coord, i);
        }
    }

    /// The coordinate's header, made at the end of the table when there is none.
    CoordinatePrimitiveHeader& header(std::int32_t coordinate) {
        const std::size_t i = place(coordinate, malprimh_.size());
        return i < malprimh_.size() ? malprimh_[i] : malprimh_.append({coordinate});
    }

private:
    /// Where the header of the coordinate stands; `otherwise`, from now on, when there is none.
    std::size_t place(std::int32_t coordinate, std::size_t otherwise) {
        return headerOf_.find(static_cast<std::uint32_t>(coordinate), [&] { return otherwise; });
    }

    Table<CoordinatePrimitiveHeader>& malprimh_;
    KeyMap<std::uint64_t, std::size_t> headerOf_;
};

void buildPrimitiveHeaders(const std::string& modelName, Primitives& primitives,
                           const CoordinateLists& lists, bool sharedExists) {
    const std::size_t independentCount = primitives.malprim.size() - (sharedExists ? 1 : 0);
    HeaderIndex headers(primitives.malprimh);
    std::uint64_t words = 0;
    for (std::uint32_t b = 0; b < independentCount; ++b) {
        const PrimitiveBody& body = primitives.malprim[b];
        const auto types = static_cast<std::uint32_t>(body.maltype.size());
        // Few lines can ask for more headers than any file holds.
        words += format::typeDescriptionSize * types * lists.length(body.cno);
        checkFileSize(modelName, words);
        for (const std::int32_t coordinate : lists.entries(body.cno)) {
            CoordinatePrimitiveHeader& header = headers.header(coordinate);
            header.bodies.append(b);
            header.typeNum += types;
        }
    }
    if (sharedExists) {
        primitives.malsprimh.appendAll(primitives.malprim[independentCount].maltype.records());
    }
}

template <class Item>
void buildBodies(Model& model, Table<Item>& items) {
    BodyBuilder builder(model.primitives, model.coordinateLists);
    const bool sharedExists = builder.build(items);
    buildPrimitiveHeaders(model.description.fileName, model.primitives, model.coordinateLists,
                          sharedExists);
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
    for (MaterialRecord& material : model.materials.records) {
        material.group = MaterialRecord::noGroup;
    }
    for (const MeshRecord& mesh : model.meshes) {
        if (mesh.polyNum == 1) {
            model.materials.records[model.polygonsOf(mesh).front().material].group = mesh.group;
        }
    }
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
