#include "writers/point_sections.h"

#include <array>

#include "format/fixed_point.h"
#include "format/format.h"

namespace mqf2vxb {
namespace {

/// The comments of the first word of each block.
struct BlockComments {
    std::string_view independent;
    std::string_view shared;
    std::string_view allShared;
    std::string_view calculated;
};

constexpr BlockComments vertexComments{"/* Vertex Top */", "/* Shared Vertex Top */",
                                       "/* Shared Vertex Top(Vertex Top) */",
                                       "/* Calculated Shared Vertex Top */"};
constexpr BlockComments normalComments{"/* Normal Top */", "/* Shared Normal Top */",
                                       "/* Shared Normal Top(Normal Top) */",
                                       "/* Calculated Shared Normal Top */"};

void putPoint(const VertexRecord& point, double factor, std::string_view comment,
              OutputWordStream& stream) {
    stream.putWord(truncatedPair(point.x * factor, point.y * factor), comment);
    stream.putWord(truncatedPair(point.z * factor, 0));
}

void writePoints(const Table<VertexRecord>& points, std::uint32_t sharedTotal, float factor,
                 const BlockComments& comments, OutputWordStream& stream) {
    const std::size_t independent = points.size() - sharedTotal;
    for (std::size_t i = 0; i < points.size(); ++i) {
        std::string_view comment;
        if (i == 0) {
            comment = independent == 0 ? comments.allShared : comments.independent;
        } else if (i == independent) {
            comment = comments.shared;
        }
        putPoint(points[i], factor, comment, stream);
    }
    for (std::uint32_t i = 0; i < sharedTotal; ++i) {
        putPoint({}, 0, i == 0 ? comments.calculated : std::string_view{}, stream);
    }
}

}  // namespace

void writeVertexSection(const Model& model, float scale, const OutputLayout& layout,
                        OutputWordStream& stream) {
    stream.checkPosition(layout.vertices.independentTop, "vertex section");
    writePoints(model.vertices, model.primitives.SharedVertexTotal, scale, vertexComments, stream);
}

void writeNormalSection(const Model& model, const OutputLayout& layout, OutputWordStream& stream) {
    stream.checkPosition(layout.normals.independentTop, "normal section");
    writePoints(model.normals, model.primitives.SharedNormalTotal, format::normalScale,
                normalComments, stream);
}

}  // namespace mqf2vxb
