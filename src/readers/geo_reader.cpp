#include "readers/geo_reader.h"

#include "text/line_reader.h"
#include "text/plain_line.h"

namespace mqf2vxb {
namespace {

/// A line of one digit and its line feed.
constexpr std::size_t shortestLine = 2;

void readPoints(LineReader& reader, std::int32_t count, std::string_view what,
                Table<VertexRecord>& points) {
    points.allocate(static_cast<std::size_t>(count));
    std::int32_t index = 0;
    for (VertexRecord& point : points) {
        point.index = index++;
        requireFields(reader, what, point.x, point.y, point.z);
    }
}

}  // namespace

void readGeometry(Inputs& inputs, const std::string& fileName, Table<VertexRecord>& vertices,
                  Table<NormalRecord>& normals, Table<PolygonRecord>& polygons) {
    LineReader reader(inputs, fileName, "@GEO970401");
    reader.requireLine("its counts");
    std::int32_t vertexNum = 0;
    std::int32_t normalNum = 0;
    std::int32_t polygonNum = 0;
    scanLine(reader, vertexNum, normalNum, polygonNum);
    reader.checkCount(vertexNum, shortestLine, "vertices");
    reader.checkCount(normalNum, shortestLine, "normals");
    reader.checkCount(polygonNum, shortestLine, "polygons");

    readPoints(reader, vertexNum, "its last vertex", vertices);
    readPoints(reader, normalNum, "its last normal", normals);
    polygons.allocate(static_cast<std::size_t>(polygonNum));
    for (PolygonRecord& polygon : polygons) {
        std::uint32_t kind = 0;
        requireFields(reader, "its last polygon", Hex{kind}, polygon.vertex, polygon.normal);
        polygon.type = static_cast<std::int32_t>(kind);
    }
}

}  // namespace mqf2vxb
