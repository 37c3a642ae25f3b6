#include "vxbtool/unpack/hierarchy.h"

#include <algorithm>
#include <map>
#include <utility>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "format/format.h"
#include "text/token_reader.h"
#include "vxbtool/model_text/shortest_fixed.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::VxbFile;

template <class Use>
void forPoints(const VxbFile& file, const mqf2vxb::PointSection& section, Use use) {
    for (const mqf2vxb::PointBlock* block : {&section.independent, &section.shared}) {
        for (std::uint32_t i = 0; i < block->number; ++i) {
            use(file.point(*block, i));
        }
    }
}

void addSharedNote(const mqf2vxb::PointSection& section, const char* text,
                   model_text::Notes& notes) {
    if (section.shared.number > 0) {
        notes.push_back({section.independent.number, text});
    }
}

bool hasObjects(const VxbFile& file, std::size_t coordinate) {
    constexpr std::size_t firstBlock = mqf2vxb::format::fileHeaderSize + 1;
    return file.words[firstBlock + coordinate] != 0;
}

/// The lists of the vertices, entry by entry.
class ListEntries {
public:
    explicit ListEntries(const VxbFile& file, const Owners& owners) : owners_(owners) {
        const std::uint32_t vertices =
            file.vertices.independent.number + file.vertices.shared.number;
        std::size_t named = 0;
        for (std::uint32_t v = 0; v < vertices; ++v) {
            if (owners.listOf(v) != Owners::none) {
                open_.push_back(v);
                named += listOf(v).size();
                longest_ = std::max(longest_, listOf(v).size());
            }
        }
        if (std::cmp_greater(named, mqf2vxb::mostNamedVertices)) {
            mqf2vxb::notCorrectData({"the unpacked hierarchy"},
                                    "it would name more than 16777216 vertices");
        }
    }

    [[nodiscard]] std::size_t longest() const { return longest_; }
    /// The vertices by the entry at this place of their lists. To be called for each place in turn.
    [[nodiscard]] std::map<std::uint32_t, std::vector<std::uint32_t>> at(std::size_t place) {
        std::erase_if(open_, [&](std::uint32_t v) { return listOf(v).size() <= place; });
        std::map<std::uint32_t, std::vector<std::uint32_t>> result;
        for (const std::uint32_t v : open_) {
            result[listOf(v)[place]].push_back(v);
        }
        return result;
    }

private:
    [[nodiscard]] const std::vector<std::uint32_t>& listOf(std::uint32_t vertex) const {
        return owners_.lists()[owners_.listOf(vertex)];
    }

    const Owners& owners_;
    std::vector<std::uint32_t> open_;  // vertices whose lists go on
    std::size_t longest_ = 1;
};

}  // namespace

model_text::Geometry unpackPoints(const VxbFile& file) {
    model_text::Geometry geometry;
    forPoints(file, file.vertices, [&](const mqf2vxb::Point& point) {
        geometry.vertices.push_back({static_cast<float>(point.x), static_cast<float>(point.y),
                                     static_cast<float>(point.z)});
    });
    forPoints(file, file.normals, [&](const mqf2vxb::Point& point) {
        geometry.normals.push_back({model_text::shortestFixed(point.x),
                                    model_text::shortestFixed(point.y),
                                    model_text::shortestFixed(point.z)});
    });
    addSharedNote(file.vertices, "vertices of shared polygons, by coordinate",
                  geometry.vertexNotes);
    addSharedNote(file.normals, "normals of shared polygons, by coordinate", geometry.normalNotes);
    return geometry;
}

model_text::Hierarchy unpackHierarchy(const VxbFile& file, const Owners& owners) {
    model_text::Hierarchy hierarchy;
    for (std::size_t c = 0; c < file.coordinates.size(); ++c) {
        const mqf2vxb::Coordinate& coordinate = file.coordinates[c];
        model_text::Coordinate added;
        std::copy(coordinate.matrix.begin(), coordinate.matrix.end(), added.matrix.begin());
        added.translation = coordinate.translation;
        std::copy(coordinate.extra.begin(), coordinate.extra.end(), added.extra.begin());
        added.parent = coordinate.namedParent.value_or(static_cast<std::uint32_t>(c));
        hierarchy.coordinates.push_back(added);
        hierarchy.coordinateNotes.push_back({c, coordinate.namedParent
                                                    ? fmt::format("coordinate {}", c)
                                                    : fmt::format("coordinate {}, a root", c)});
    }

    ListEntries entries(file, owners);
    // A vertex of several coordinates has them in the order of the lines that name it.
    for (std::size_t place = 0; place < entries.longest(); ++place) {
        auto byEntry = entries.at(place);
        // What no line names is in coordinate 0, whether that has objects or not.
        for (std::uint32_t c = 0; place == 0 && c < file.coordinates.size(); ++c) {
            byEntry[c];
        }
        for (auto& [c, vertices] : byEntry) {
            if (c < file.coordinates.size() && hasObjects(file, c)) {
                hierarchy.assignments.push_back({c, std::move(vertices)});
            }
        }
        if (place == 0 && entries.longest() > 1) {
            hierarchy.assignmentNotes.push_back(
                {hierarchy.assignments.size(), "further coordinates of the same vertices"});
        }
    }
    return hierarchy;
}

}  // namespace vxbtool::unpack
