#include <array>

#include "vxbtool/model_text/component_files.h"

namespace vxbtool::model_text {
namespace {

void writePoints(const std::vector<Point>& points, const Notes& notes, TextFile& file) {
    NoteWriter noteWriter(notes, file);
    for (std::size_t i = 0; i < points.size(); ++i) {
        noteWriter.before(i);
        file.real(points[i].x);
        file.put(" ");
        file.real(points[i].y);
        file.put(" ");
        file.real(points[i].z);
        file.put("\n");
    }
    noteWriter.before(points.size());
}

void writeCorners(const std::array<std::uint32_t, 4>& corners, TextFile& file) {
    file.put(" ");
    for (const std::uint32_t corner : corners) {
        file.put(" ");
        file.number(corner);
    }
}

}  // namespace

void writeGeometry(const Geometry& geometry, const std::string& comment, TextFile& file) {
    file.put("@GEO970401\n");
    file.comment(comment);
    file.comment("numbers of vertices, normals and polygons");
    file.number(static_cast<std::int64_t>(geometry.vertices.size()));
    file.put(" ");
    file.number(static_cast<std::int64_t>(geometry.normals.size()));
    file.put(" ");
    file.number(static_cast<std::int64_t>(geometry.polygons.size()));
    file.put("\n# vertices: x y z\n");
    writePoints(geometry.vertices, geometry.vertexNotes, file);
    file.put("# normals: x y z\n");
    writePoints(geometry.normals, geometry.normalNotes, file);
    file.put("# polygons: shape (0 triangle, 1 quadrangle), four vertices, four normals\n");
    constexpr std::array<std::string_view, 4> shapes{"0", "1", "2", "3"};
    NoteWriter noteWriter(geometry.polygonNotes, file);
    for (std::size_t i = 0; i < geometry.polygons.size(); ++i) {
        noteWriter.before(i);
        const Polygon& polygon = geometry.polygons[i];
        file.put(shapes[static_cast<std::size_t>(polygon.shape)]);
        writeCorners(polygon.vertices, file);
        writeCorners(polygon.normals, file);
        file.put("\n");
    }
    noteWriter.before(geometry.polygons.size());
}

}  // namespace vxbtool::model_text
