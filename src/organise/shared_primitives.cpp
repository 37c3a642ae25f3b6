#include "organise/shared_primitives.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mqf2vxb {
namespace {

/// The order that the format asks for is that of sweeps over the table, which exchange each record
/// of the header's coordinate with the record at the start of what is left of the shared block;
/// a record that an exchange puts behind the sweep waits for the next one. The same exchanges are
/// made here from lists of the positions where each coordinate's records lie.
class Gathering {
public:
    Gathering(Table<VertexRecord>& records, const Table<CoordinatePrimitiveHeader>& headers,
              const CoordinateLists& lists, std::size_t sharedTotal)
        : records_(records),
          lists_(lists),
          blockStart_(records.size() - sharedTotal),
          next_(blockStart_),
          positions_(headers.size()) {
        for (std::size_t h = 0; h < headers.size(); ++h) {
            headerOf_[headers[h].coord] = h;
        }
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (records[i].shared) {
                positionsOf(records[i]).push_back(i);
            }
        }
    }

    void gather() {
        for (std::vector<std::size_t>& positions : positions_) {
            std::sort(positions.begin(), positions.end());
            while (!positions.empty()) {
                // What the sweep's exchanges put behind it lands in `positions` again, ascending.
                for (const std::size_t position : std::exchange(positions, {})) {
                    take(position);
                }
            }
        }
    }

private:
    std::vector<std::size_t>& positionsOf(const VertexRecord& record) {
        return positions_[headerOf_.at(lists_.first(record.cno))];
    }

    [[nodiscard]] bool isTaken(std::size_t position) const {
        return position >= blockStart_ && position < next_;
    }

    /// Exchanges the record at this position into the block; one that an exchange has taken away
    /// from there leaves a position behind that is in the block's finished part.
    void take(std::size_t position) {
        if (isTaken(position)) {
            return;
        }
        records_[position].sharedIndex = static_cast<std::int32_t>(next_ - blockStart_);
        if (position != next_) {
            std::swap(records_[position], records_[next_]);
            if (records_[position].shared) {
                positionsOf(records_[position]).push_back(position);
            }
        }
        ++next_;
    }

    Table<VertexRecord>& records_;
    const CoordinateLists& lists_;
    std::size_t blockStart_;
    std::size_t next_;  // the first position of the block that is not finished
    std::unordered_map<std::int32_t, std::size_t> headerOf_;
    std::vector<std::vector<std::size_t>> positions_;  // by header
};

/// The position of every record by its number in the GEO file.
std::vector<std::size_t> positionByIndex(const Table<VertexRecord>& records) {
    std::vector<std::size_t> result(records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        result[static_cast<std::size_t>(records[i].index)] = i;
    }
    return result;
}

/// The new number of a vertex or normal; one that the table does not have keeps its number.
std::int32_t renumbered(std::int32_t index, bool shared, const Table<VertexRecord>& records,
                        const std::vector<std::size_t>& positions) {
    if (index < 0 || static_cast<std::size_t>(index) >= positions.size()) {
        return index;
    }
    const std::size_t position = positions[static_cast<std::size_t>(index)];
    return shared ? records[position].sharedIndex : static_cast<std::int32_t>(position);
}

void renumberPolygons(Model& model) {
    const std::vector<std::size_t> vertices = positionByIndex(model.vertices);
    const std::vector<std::size_t> normals = positionByIndex(model.normals);
    std::vector<bool> done(model.polygons.size());
    for (const MaterialRecord& material : model.materials.records) {
        PolygonRecord& polygon = model.polygons.at(material.polygon);
        const bool drawn =
            polygon.type == polygon_type::triangle || polygon.type == polygon_type::quadrangle;
        if (!drawn || done[static_cast<std::size_t>(material.polygon)]) {
            continue;
        }
        done[static_cast<std::size_t>(material.polygon)] = true;
        const bool shared = material.cno == CoordinateListId::shared;
        for (std::size_t k = 0; k < vertexCount(polygon.type); ++k) {
            polygon.vertex[k] = renumbered(polygon.vertex[k], shared, model.vertices, vertices);
            polygon.normal[k] = renumbered(polygon.normal[k], shared, model.normals, normals);
        }
    }
}

}  // namespace

void prepareSharedPrimitives(Model& model) {
    const Primitives& primitives = model.primitives;
    Gathering(model.vertices, primitives.malprimh, model.coordinateLists,
              primitives.SharedVertexTotal)
        .gather();
    Gathering(model.normals, primitives.malprimh, model.coordinateLists,
              primitives.SharedNormalTotal)
        .gather();
    renumberPolygons(model);
}

}  // namespace mqf2vxb
