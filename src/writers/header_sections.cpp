#include "writers/header_sections.h"

#include <span>
#include <unordered_map>
#include <utility>

#include "format/format.h"

namespace mqf2vxb {
namespace {

using format::bit31;

void putCoordinateTops(const OutputLayout& layout, const OutputLayout::GlobalHeader& header,
                       OutputWordStream& stream) {
    for (std::uint32_t i = 0; i < header.coordinateTops; ++i) {
        stream.putWord(layout.coordinateTop | bit31, "/* Coordinate Top */");
    }
}

void writeIndependentGlobalHeader(const Model& model, const OutputLayout& layout,
                                  OutputWordStream& stream) {
    stream.putWord(layout.independentHeader.size - 1,
                   "/* Independent Primitive Global Header Size */");
    stream.putWord(layout.independentPrimitiveTop | bit31, "/* Independent Primitive Top */");
    stream.putWord(layout.vertices.independentTop | bit31, "/* Independent Vertex Top */");
    stream.putWord(model.normals.empty() ? 0 : layout.normals.independentTop | bit31,
                   "/* Independent Normal Top */");
    putCoordinateTops(layout, layout.independentHeader, stream);
}

void writeSharedGlobalHeader(const Model& model, const OutputLayout& layout,
                             OutputWordStream& stream) {
    const bool normals = model.primitives.SharedNormalTotal > 0;
    stream.putWord(layout.sharedHeader.size - 1, "/* Shared Primitive Global Header Size */");
    stream.putWord(layout.sharedPrimitiveTop | bit31, "/* Shared Primitive Top */");
    stream.putWord(layout.vertices.sharedTop | bit31, "/* Shared Vertex Top */");
    stream.putWord(layout.vertices.calculatedTop | bit31, "/* Calculated Shared Vertex Top */");
    stream.putWord(normals ? layout.normals.sharedTop | bit31 : 0, "/* Shared Normal Top */");
    stream.putWord(normals ? layout.normals.calculatedTop | bit31 : 0,
                   "/* Calculated Shared Normal Top */");
    putCoordinateTops(layout, layout.sharedHeader, stream);
}

void writeAnimationGlobalHeader(const OutputLayout& layout, OutputWordStream& stream) {
    // The format has two size words here, and the size counts both.
    for (int i = 0; i < 2; ++i) {
        stream.putWord(layout.animationHeader.size - 1,
                       "/* Animation Primitive Global Header Size */");
    }
    stream.putWord(layout.complementFunctionTop | bit31, "/* Complement Function Top */");
    stream.putWord(layout.controlTop | bit31, "/* Control Top */");
    stream.putWord(layout.matrixTop | bit31, "/* Matrix Top */");
    putCoordinateTops(layout, layout.animationHeader, stream);
}

void writeImageGlobalHeader(const OutputLayout& layout, OutputWordStream& stream) {
    stream.putWord(layout.imageHeader.size - 1, "/* Image Primitive Global Header Size */");
    stream.putWord(layout.imageTop | bit31, "/* Image Top */");
    stream.putWord(layout.clutTop > 0 ? layout.clutTop | bit31 : 0, "/* Clut Top */");
}

/// The packet groups that `primIndex` numbers, and where the file's Primitive Index words count from.
struct PacketTop {
    std::span<const std::uint32_t> groups;
    std::uint32_t offset;
};

void putTypeNumber(std::size_t number, OutputWordStream& stream) {
    stream.putWord(static_cast<std::uint32_t>(number) | bit31, "/* Type Number */");
}

/// The type descriptions of these entries; the first one carries `mark`.
void putTypes(const Table<PrimitiveTypeEntry>& entries, const PacketTop& top,
              PrimitiveTypeCode mark, OutputWordStream& stream) {
    for (const PrimitiveTypeEntry& entry : entries) {
        stream.putWord(entry.type | std::exchange(mark, 0), "/* Type */");
        stream.putWord(format::numberAndSize(entry.polyNum, format::typeDescriptionRest),
                       "/* Polygon Number, Size */");
        stream.putWord(top.groups[entry.primIndex] - top.offset, "/* Primitive Index */");
    }
}

/// What the first type of the coordinate's first header carries: bit 23 when the coordinate is the
/// first one with objects.
PrimitiveTypeCode firstMark(const CoordinatePrimitiveHeader& header, const OutputLayout& layout) {
    return header.coord == layout.FirstObjectCoordinate ? type_code::first : 0;
}

void writeIndependentHeader(const CoordinatePrimitiveHeader& header,
                            const Table<PrimitiveBody>& malprim, const OutputLayout& layout,
                            OutputWordStream& stream) {
    const auto size = static_cast<std::uint32_t>(format::typesHeaderSize(header.typeNum));
    const auto next = static_cast<std::uint32_t>(stream.position()) + size;
    stream.putWord(header.sharedVertexNum > 0 ? next : format::endOfChain,
                   "/* Next Primitive Pointer */");
    stream.putWord(layout.independentHeader.offset,
                   "/* Independent Primitive Global Header Pointer */");
    putTypeNumber(header.typeNum, stream);
    PrimitiveTypeCode mark = firstMark(header, layout);
    for (const std::uint32_t body : header.bodies) {
        putTypes(malprim[body].maltype, {layout.groups, layout.independentPrimitiveTop},
                 std::exchange(mark, 0), stream);
    }
}

/// Where the next shared-vertex header's records start in the shared blocks.
struct SharedOffsets {
    std::uint32_t vertices = 0;
    std::uint32_t normals = 0;
};

void putSharedPointer(const OutputLayout& layout, OutputWordStream& stream) {
    stream.putWord(format::endOfChain, "/* Next Primitive Pointer */");
    stream.putWord(layout.sharedHeader.offset, "/* Shared Primitive Global Header Pointer */");
}

void writeSharedVertexHeader(const CoordinatePrimitiveHeader& header, const SharedOffsets& offsets,
                             const OutputLayout& layout, OutputWordStream& stream) {
    putSharedPointer(layout, stream);
    putTypeNumber(1, stream);
    stream.putWord(type_code::sharedVertex | (header.typeNum == 0 ? firstMark(header, layout) : 0),
                   "/* Type */");
    stream.putWord(format::numberAndSize(0, format::sharedVertexRest),
                   "/* Polygon Number, Size */");
    stream.putWord(header.sharedVertexNum, "/* Shared Vertex Number */");
    stream.putWord(offsets.vertices, "/* Shared Vertex Offset(src) */");
    stream.putWord(offsets.vertices, "/* Shared Vertex Offset(dst) */");
    stream.putWord(header.sharedNormalNum, "/* Shared Normal Number */");
    stream.putWord(offsets.normals, "/* Shared Normal Offset(src) */");
    stream.putWord(offsets.normals, "/* Shared Normal Offset(dst) */");
}

}  // namespace

void writeFileHeader(const Model& model, const OutputLayout& layout, OutputWordStream& stream) {
    stream.checkPosition(0, "file header");
    stream.putWord(format::fileId, "/* ID */");
    stream.putWord(0, "/* Flag */");
    stream.putWord(layout.primitiveGlobalHeaderTop, "/* Primitive Global Header Top */");
    stream.putWord(static_cast<std::uint32_t>(format::blockNumber(model.coordinates.size())),
                   "/* Block Number */");
}

void writeBlockTable(const Model& model, const OutputLayout& layout, OutputWordStream& stream) {
    stream.checkPosition(format::fileHeaderSize, "block table");
    const bool anyPre = !model.motions.empty() || imagesWritten(model);
    stream.putWord(anyPre ? layout.animationSection : 0, "/* Pre Primitive Top */");

    std::unordered_map<std::int32_t, std::uint32_t> headerOf;
    for (std::size_t i = 0; i < layout.coordinateHeaders.size(); ++i) {
        headerOf[model.primitives.malprimh[i].coord] = layout.coordinateHeaders[i];
    }
    for (std::size_t c = 0; c < model.coordinates.size(); ++c) {
        const auto coordinate = static_cast<std::int32_t>(c);
        std::uint32_t top = 0;
        if (model.coordinates[c].hasObjects) {
            const auto header = headerOf.find(coordinate);
            // Objects, but nothing to draw: the word points behind the headers of all coordinates.
            top = header == headerOf.end() ? layout.sharedPrimitiveHeader : header->second;
        }
        stream.putWord(top, "/* Coordinate%d Primitive Top */", coordinate);
    }
    stream.putWord(model.primitives.hasShared() ? layout.sharedPrimitiveHeader : 0,
                   "/* Post Primitive Top */");
}

void writePrimitiveHeaderSection(const Model& model, const OutputLayout& layout,
                                 OutputWordStream& stream) {
    stream.checkPosition(layout.primitiveGlobalHeaderTop, "primitive header section");
    std::uint32_t present = 0;
    for (const auto* header : {&layout.independentHeader, &layout.sharedHeader,
                               &layout.animationHeader, &layout.imageHeader}) {
        present += header->present() ? 1 : 0;
    }
    stream.putWord(present, "/* Primitive Global Header Number */");
    if (layout.independentHeader.present()) {
        writeIndependentGlobalHeader(model, layout, stream);
    }
    if (layout.sharedHeader.present()) {
        writeSharedGlobalHeader(model, layout, stream);
    }
    if (layout.animationHeader.present()) {
        writeAnimationGlobalHeader(layout, stream);
    }
    if (layout.imageHeader.present()) {
        writeImageGlobalHeader(layout, stream);
    }
}

void writePrimitiveHeaders(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream) {
    const Primitives& primitives = model.primitives;
    SharedOffsets offsets;
    for (std::size_t i = 0; i < primitives.malprimh.size(); ++i) {
        const CoordinatePrimitiveHeader& header = primitives.malprimh[i];
        stream.checkPosition(layout.coordinateHeaders[i], "primitive header");
        if (header.typeNum != 0) {
            writeIndependentHeader(header, primitives.malprim, layout, stream);
        }
        if (header.sharedVertexNum > 0) {
            writeSharedVertexHeader(header, offsets, layout, stream);
        }
        offsets.vertices += header.sharedVertexNum;
        offsets.normals += header.sharedNormalNum;
    }
    stream.checkPosition(layout.sharedPrimitiveHeader, "shared primitive header");
    if (primitives.hasShared()) {
        putSharedPointer(layout, stream);
        const std::span groups(layout.groups);
        putTypeNumber(primitives.malsprimh.size(), stream);
        putTypes(primitives.malsprimh,
                 {groups.last(primitives.malsprimh.size()), layout.sharedPrimitiveTop}, 0, stream);
    }
}

}  // namespace mqf2vxb
