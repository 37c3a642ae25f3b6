#include <span>
#include <string>

#include "vxbtool/model_text/component_files.h"
#include "vxbtool/model_text/index_list.h"

namespace vxbtool::model_text {
namespace {

/// Where a list goes on in the next line.
constexpr std::size_t listWidth = 90;

void writeNumbers(std::span<const std::int32_t> numbers, std::string_view between, TextFile& file) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        file.put(i == 0 ? "" : i % 3 == 0 ? between : " ");
        file.number(numbers[i]);
    }
}

void writeAssignment(const Assignment& assignment, TextFile& file) {
    std::string line = std::to_string(assignment.coordinate) + " " +
                       std::to_string(assignment.vertices.size()) + "  ";
    std::span<const std::uint32_t> rest = assignment.vertices;
    while (!rest.empty()) {
        const std::size_t length = runLength(rest);
        appendRun(rest.front(), length, line);
        rest = rest.subspan(length);
        if (!rest.empty()) {
            line += ',';
        }
        if (line.size() > listWidth && !rest.empty()) {
            file.put(line);
            file.put("\n");
            line = "    ";
        }
    }
    file.put(line);
    file.put("\n");
}

}  // namespace

void writeHierarchy(const Hierarchy& hierarchy, const std::string& comment, TextFile& file) {
    file.put("@FRM970401\n");
    file.comment(comment);
    file.put("GROUP=NULL\n# number of coordinates\n");
    file.number(static_cast<std::int64_t>(hierarchy.coordinates.size()));
    file.put("\n# matrix (4096 is 1.0), translation, three more values, parent\n");
    NoteWriter coordinateNotes(hierarchy.coordinateNotes, file);
    for (std::size_t i = 0; i < hierarchy.coordinates.size(); ++i) {
        coordinateNotes.before(i);
        const Coordinate& coordinate = hierarchy.coordinates[i];
        writeNumbers(coordinate.matrix, "  ", file);
        file.put("   ");
        writeNumbers(coordinate.translation, "", file);
        file.put("   ");
        writeNumbers(coordinate.extra, "", file);
        file.put("  ");
        file.number(coordinate.parent);
        file.put("\n");
    }
    coordinateNotes.before(hierarchy.coordinates.size());
    file.put("# coordinate, number of vertices, vertices\n");
    NoteWriter assignmentNotes(hierarchy.assignmentNotes, file);
    for (std::size_t i = 0; i < hierarchy.assignments.size(); ++i) {
        assignmentNotes.before(i);
        writeAssignment(hierarchy.assignments[i], file);
    }
    assignmentNotes.before(hierarchy.assignments.size());
}

void writeMeshes(const Meshes& meshes, const std::string& comment, TextFile& file) {
    file.put("@BND970401\n");
    file.comment(comment);
    file.put("# number of meshes\n");
    file.number(static_cast<std::int64_t>(meshes.ends.size()));
    file.put("\n# number of polygons, polygons in the order of the strip\n");
    NoteWriter notes(meshes.notes, file);
    std::size_t polygon = 0;
    for (std::size_t i = 0; i < meshes.ends.size(); ++i) {
        notes.before(i);
        std::string line = std::to_string(meshes.ends[i] - polygon) + " ";
        for (; polygon < meshes.ends[i]; ++polygon) {
            if (line.size() > listWidth) {
                file.put(line);
                file.put("\n");
                line = "   ";
            }
            line += ' ';
            line += std::to_string(meshes.polygons[polygon]);
        }
        file.put(line);
        file.put("\n");
    }
    notes.before(meshes.ends.size());
}

}  // namespace vxbtool::model_text
