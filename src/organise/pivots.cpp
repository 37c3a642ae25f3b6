#include "organise/pivots.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <numeric>
#include <vector>

#include "base/diagnostics.h"
#include "base/key_map.h"

namespace mqf2vxb {
namespace {

/// A pivot to subtract from every vertex of one coordinate list, once for each time that its
/// coordinate stands in the list.
struct ListPivot {
    std::uint32_t pivot;
    std::uint32_t times;
};

/// The pivots of the lists that a model's vertices lie in.
class ListPivots {
public:
    explicit ListPivots(const Model& model) : lists_(model.coordinateLists) {
        for (std::uint32_t i = 0; i < model.pivots.size(); ++i) {
            const std::uint32_t owner =
                ownerOf_.find(keyOf(model.pivots[i].coord), [&] { return newOwner(); });
            ownerOfPivot_.push_back(owner);
            owners_[owner].pivots.push_back(i);
        }
    }

    /// Looks up which coordinates of a list have pivots; returns how many subtractions each of its
    /// vertices takes.
    std::uint64_t find(CoordinateListId list) {
        for (const std::uint32_t owner : found_) {
            owners_[owner].times = 0;
        }
        found_.clear();
        std::uint64_t number = 0;
        for (const std::int32_t coordinate : lists_.entries(list)) {
            const std::uint32_t* owner = ownerOf_.find(keyOf(coordinate));
            if (owner != nullptr) {
                number += owners_[*owner].pivots.size();
                if (owners_[*owner].times++ == 0) {
                    found_.push_back(*owner);
                }
            }
        }
        return number;
    }

    /// The pivots of the list found last, in their order.
    const std::vector<ListPivot>& inOrder() {
        listed_.clear();
        std::size_t number = 0;
        for (const std::uint32_t owner : found_) {
            number += owners_[owner].pivots.size();
        }
        // To sort a few costs less than to pass over all; one owner's stand in order already.
        const bool sort = found_.size() > 1 && 4 * number * std::bit_width(number) < pivotNum();
        if (found_.size() > 1 && !sort) {
            for (std::uint32_t i = 0; i < pivotNum(); ++i) {
                add(i);
            }
            return listed_;
        }
        for (const std::uint32_t owner : found_) {
            std::for_each(owners_[owner].pivots.begin(), owners_[owner].pivots.end(),
                          [this](std::uint32_t pivot) { add(pivot); });
        }
        if (sort) {
            std::sort(listed_.begin(), listed_.end(),
                      [](const ListPivot& a, const ListPivot& b) { return a.pivot < b.pivot; });
        }
        return listed_;
    }

private:
    /// A coordinate that has pivots.
    struct Owner {
        std::vector<std::uint32_t> pivots;  // ascending
        std::uint32_t times = 0;            // how often the list found last names it
    };

    static std::uint64_t keyOf(std::int32_t coordinate) {
        return static_cast<std::uint32_t>(coordinate);
    }
    [[nodiscard]] std::size_t pivotNum() const { return ownerOfPivot_.size(); }

    std::uint32_t newOwner() {
        owners_.emplace_back();
        return static_cast<std::uint32_t>(owners_.size() - 1);
    }

    void add(std::uint32_t pivot) {
        const std::uint32_t times = owners_[ownerOfPivot_[pivot]].times;
        if (times > 0) {
            listed_.push_back({pivot, times});
        }
    }

    const CoordinateLists& lists_;
    KeyMap<std::uint64_t, std::uint32_t> ownerOf_;  // by coordinate
    std::vector<Owner> owners_;
    std::vector<std::uint32_t> ownerOfPivot_;
    std::vector<std::uint32_t> found_;  // owners, those of the list found last
    std::vector<ListPivot> listed_;
};

/// The order of the subtractions matters, because each of them rounds; so the pivots of one
/// coordinate cannot be added up beforehand. This ceiling keeps short files from taking hours.
constexpr std::uint64_t mostSubtractions = std::uint64_t{1} << 26U;

void subtract(const Table<PivotRecord>& pivots, const std::vector<ListPivot>& listed,
              VertexRecord& vertex) {
    for (const ListPivot& one : listed) {
        const PivotRecord& pivot = pivots[one.pivot];
        for (std::uint32_t i = 0; i < one.times; ++i) {
            vertex.x -= pivot.x;
            vertex.y -= pivot.y;
            vertex.z -= pivot.z;
        }
    }
}

/// The numbers of all vertices, those with the same list side by side.
std::vector<std::uint32_t> verticesByList(const Model& model) {
    const auto listOf = [](const VertexRecord& vertex) {
        return static_cast<std::size_t>(vertex.cno);
    };
    std::vector<std::uint32_t> place(model.coordinateLists.size());
    for (const VertexRecord& vertex : model.vertices) {
        ++place[listOf(vertex)];
    }
    std::exclusive_scan(place.begin(), place.end(), place.begin(), 0U);
    std::vector<std::uint32_t> vertices(model.vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        vertices[place[listOf(model.vertices[i])]++] = i;
    }
    return vertices;
}

}  // namespace

void applyPivots(Model& model) {
    if (model.pivots.empty() || !model.primitives.written()) {
        return;
    }
    // Vertices with equal lists have equal pivots, which are looked up once for all of them.
    const std::vector<std::uint32_t> vertices = verticesByList(model);
    ListPivots listPivots(model);
    std::uint64_t left = mostSubtractions;
    for (auto first = vertices.begin(); first != vertices.end();) {
        const CoordinateListId list = model.vertices[*first].cno;
        const auto last = std::find_if(
            first, vertices.end(), [&](std::uint32_t v) { return model.vertices[v].cno != list; });
        const auto alike = static_cast<std::uint64_t>(last - first);
        const std::uint64_t each = listPivots.find(list);
        if (each > left / alike) {
            notCorrectData({model.description.axs.fileName},
                           "more than 67108864 pivots to subtract from all vertices");
        }
        left -= each * alike;
        const std::vector<ListPivot>& pivots = listPivots.inOrder();
        for (; first != last; ++first) {
            subtract(model.pivots, pivots, model.vertices[*first]);
        }
    }
}

}  // namespace mqf2vxb
