#include "vxbtool/unpack/hierarchy.h"

#include <algorithm>
#include <map>

#include <fmt/core.h>

#include "format/format.h"
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

/// The vertices by the entry that stands at one place of their lists.
std::map<std::uint32_t, std::vector<std::uint32_t>>
verticesByEntry(const Owners& owners, std::uint32_t vertices, std::size_t place) {
    std::map<std::uint32_t, std::vector<std::uint32_t>> result;
    for (std::uint32_t v = 0; v < vertices; ++v) {
        const std::uint32_t list = owners.listOf(v);
        if (list != Owners::none && owners.lists()[list].size() > place) {
            result[owners.lists()[list][place]].push_back(v);
        }
    }
    return result;
}

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
        added.parent = coordinate.parent.value_or(static_cast<std::uint32_t>(c));
        hierarchy.coordinates.push_back(added);
        hierarchy.coordinateNotes.push_back({c, coordinate.parent
                                                    ? fmt::format("coordinate {}", c)
                                                    : fmt::format("coordinate {}, a root", c)});
    }

    const std::uint32_t vertices = file.vertices.independent.number + file.vertices.shared.number;
    std::size_t longest = 1;
    for (std::uint32_t v = 0; v < vertices; ++v) {
        if (owners.listOf(v) != Owners::none) {
            longest = std::max(longest, owners.lists()[owners.listOf(v)].size());
        }
    }
    // A vertex of several coordinates has them in the order of the lines that name it.
    for (std::size_t place = 0; place < longest; ++place) {
        auto byEntry = verticesByEntry(owners, vertices, place);
        for (std::uint32_t c = 0; c < file.coordinates.size(); ++c) {
            const auto found = byEntry.find(c);
            // What no line names is in coordinate 0, whether that has objects or not.
            if (hasObjects(file, c) && (place == 0 || found != byEntry.end())) {
                hierarchy.assignments.push_back({c, found != byEntry.end()
                                                        ? std::move(found->second)
                                                        : std::vector<std::uint32_t>{}});
            }
        }
        if (place == 0 && longest > 1) {
            hierarchy.assignmentNotes.push_back(
                {hierarchy.assignments.size(), "further coordinates of the same vertices"});
        }
    }
    return hierarchy;
}

}  // namespace vxbtool::unpack
