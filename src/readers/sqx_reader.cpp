#include "readers/sqx_reader.h"

#include <unordered_map>

#include "base/seeded_hash.h"
#include "text/token_reader.h"

namespace mqf2vxb {
namespace {

/// A name and a number of one character, each with a separator.
constexpr std::size_t shortestGroup = 4;

using ListsByName = std::unordered_map<std::string, CoordinateListId, SeededHash>;

ListsByName listsByName(const Table<CoordinateRecord>& coordinates, CoordinateLists& lists) {
    ListsByName result;
    for (std::size_t c = 0; c < coordinates.size(); ++c) {
        for (const std::string& name : coordinates[c].objectName) {
            CoordinateListId& list =
                result.try_emplace(name, CoordinateListId::empty).first->second;
            list = lists.append(list, static_cast<std::int32_t>(c));
        }
    }
    return result;
}

}  // namespace

void readGroupFile(Inputs& inputs, const std::string& fileName,
                   const Table<CoordinateRecord>& coordinates, Table<VertexRecord>& vertices,
                   CoordinateLists& lists, OrphanVertices& orphans) {
    const ListsByName byName = listsByName(coordinates, lists);
    const LineReader lines(inputs, fileName, "@SQX970401");
    TokenReader tokens(lines);
    const std::int32_t groupNum = tokens.restOfLineCount(shortestGroup, "groups");
    std::int64_t named = 0;
    for (std::int32_t group = 0; group < groupNum; ++group) {
        const std::string name(tokens.word());
        const auto found = byName.find(name);
        const CoordinateListId list =
            found == byName.end() ? CoordinateListId::empty : found->second;
        if (list == CoordinateListId::empty) {
            orphans.groups.push_back(name);
        }
        withPlace(tokens, [&] {
            readNamedIndices(tokens, named, [&](std::int64_t v) {
                vertices.at(v).cno = list;
                if (list == CoordinateListId::empty) {
                    orphans.groupOfVertex[static_cast<std::int32_t>(v)] = orphans.groups.size() - 1;
                }
            });
        });
    }
    tokens.finish();
}

}  // namespace mqf2vxb
