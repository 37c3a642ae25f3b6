#include "writers/output_layout.h"

#include <string>
#include <utility>

#include "format/format.h"
#include "organise/limits.h"
#include "organise/sizes.h"

namespace mqf2vxb {
namespace {

/// Walks the file from front to back and hands out offsets.
class Walk {
public:
    /// `model` is named when the file would be too large.
    explicit Walk(std::string model) : model_(std::move(model)) {}

    /// The offset of the next word.
    [[nodiscard]] std::uint32_t here() const { return static_cast<std::uint32_t>(offset_); }

    void pass(std::uint64_t words) {
        offset_ += words;
        checkFileSize(model_, offset_);
    }

    /// Passes a part and returns where it starts.
    std::uint32_t place(std::uint64_t words) {
        const std::uint32_t start = here();
        pass(words);
        return start;
    }

private:
    std::string model_;
    std::uint64_t offset_ = 0;
};

std::optional<std::int32_t> firstObjectCoordinate(const Table<CoordinateRecord>& coordinates) {
    for (std::size_t c = 0; c < coordinates.size(); ++c) {
        if (coordinates[c].hasObjects) {
            return static_cast<std::int32_t>(c);
        }
    }
    return std::nullopt;
}

/// The headers of the first object coordinate that have types of their own, or that have none.
std::uint32_t countFirstHeaders(const Model& model, const OutputLayout& layout, bool withTypes) {
    std::uint32_t count = 0;
    for (const CoordinatePrimitiveHeader& header : model.primitives.malprimh) {
        count += header.coord == layout.FirstObjectCoordinate && (header.typeNum != 0) == withTypes
                     ? 1
                     : 0;
    }
    return count;
}

OutputLayout::GlobalHeader placeGlobalHeader(Walk& walk, bool present, std::uint32_t size,
                                             std::uint32_t coordinateTops) {
    OutputLayout::GlobalHeader header;
    if (present) {
        header.size = size + coordinateTops;
        header.coordinateTops = coordinateTops;
    }
    header.offset = walk.place(header.size);
    return header;
}

void placeGlobalHeaders(const Model& model, Walk& walk, OutputLayout& layout) {
    const Primitives& primitives = model.primitives;
    layout.primitiveGlobalHeaderTop = walk.place(format::globalHeaderNumberSize);
    layout.independentHeader = placeGlobalHeader(
        walk, primitives.written() && hasIndependentPolygons(model),
        format::independentGlobalHeaderSize, countFirstHeaders(model, layout, true));
    layout.sharedHeader =
        placeGlobalHeader(walk, primitives.hasShared(), format::sharedGlobalHeaderSize,
                          countFirstHeaders(model, layout, false));
    // Every motion moves coordinates, so its header always has a Coordinate Top word.
    layout.animationHeader =
        placeGlobalHeader(walk, !model.motions.empty(), format::animationGlobalHeaderSize, 1);
    layout.imageHeader =
        placeGlobalHeader(walk, imagesWritten(model), format::imageGlobalHeaderSize, 0);
}

void placePrimitiveHeaders(const Primitives& primitives, Walk& walk, OutputLayout& layout) {
    for (const CoordinatePrimitiveHeader& header : primitives.malprimh) {
        layout.coordinateHeaders.push_back(
            walk.place(format::typesHeaderSize(header.typeNum) +
                       (header.sharedVertexNum > 0 ? format::sharedVertexHeaderSize : 0)));
    }
    layout.sharedPrimitiveHeader = walk.place(format::typesHeaderSize(primitives.malsprimh.size()));
}

void placePackets(const Model& model, Walk& walk, OutputLayout& layout) {
    const std::vector<std::uint64_t> sizes = primtsize(model);
    const std::size_t independent = sizes.size() - model.primitives.malsprimh.size();
    layout.independentPrimitiveTop = walk.here();
    for (std::size_t group = 0; group < independent; ++group) {
        layout.groups.push_back(walk.place(sizes[group]));
    }
    layout.sharedPrimitiveTop = walk.here();
    for (std::size_t group = independent; group < sizes.size(); ++group) {
        layout.groups.push_back(walk.place(sizes[group]));
    }
}

OutputLayout::PointSection placePoints(std::size_t number, std::uint32_t sharedTotal, Walk& walk) {
    OutputLayout::PointSection section;
    section.independentTop = walk.place(format::pointSize * (number - sharedTotal));
    section.sharedTop = walk.place(format::pointSize * std::uint64_t{sharedTotal});
    section.calculatedTop = walk.place(format::pointSize * std::uint64_t{sharedTotal});
    return section;
}

void placeAnimation(const Model& model, Walk& walk, OutputLayout& layout) {
    layout.animationSection = walk.here();
    if (model.motions.empty()) {
        return;
    }
    walk.pass(format::primitiveHeaderSize);
    for (const MotionRecord& motion : model.motions) {
        walk.pass(format::motionHeaderSize + motion.indexSize());
    }
    layout.complementFunctionTop = walk.place(1 + model.aptype.size());
    layout.controlTop = walk.here();
    for (const MotionRecord& motion : model.motions) {
        walk.pass(motion.seqTable.size());
    }
    layout.matrixTop = walk.here();
    for (const MotionRecord& motion : model.motions) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            walk.pass(group.packetNum * animmtsize(group.type));
        }
    }
    if (model.unsizedStepType) {
        animmtsizeMissing(*model.unsizedStepType);
    }
}

void placeImages(const Model& model, Walk& walk, OutputLayout& layout) {
    layout.imageSection = walk.here();
    if (!imagesWritten(model)) {
        return;
    }
    walk.pass(format::primitiveHeaderSize);
    for (const PixelTypeEntry& entry : model.malimage.malpxltype) {
        walk.pass(format::imageTypeSize + imagetsize(entry.type, entry.images.size()));
    }
    layout.imageTop = walk.here();
    std::uint64_t clutWords = 0;
    bool clutPresent = false;
    for (const ImageRecord& image : model.images) {
        walk.pass(image.pixel.dataWords);
        if (image.hasClut()) {
            clutPresent = true;
            clutWords += image.clut.dataWords;
        }
    }
    layout.clutTop = clutPresent ? walk.here() : 0;
    walk.pass(clutWords);
}

}  // namespace

bool hasIndependentPolygons(const Model& model) {
    return model.primitives.SharedPolygonNum != model.materials.records.size();
}

bool imagesWritten(const Model& model) { return !model.malimage.malpxltype.empty(); }

OutputLayout computeLayout(const Model& model) {
    OutputLayout layout;
    Walk walk(model.description.fileName);
    layout.FirstObjectCoordinate = firstObjectCoordinate(model.coordinates);
    walk.pass(format::fileHeaderSize + format::blockNumber(model.coordinates.size()));
    if (!model.coordinates.empty()) {
        layout.coordinateTop = walk.place(1 + format::coordinateSize * model.coordinates.size());
    }
    placeGlobalHeaders(model, walk, layout);
    layout.sharedPrimitiveHeader = walk.here();
    if (model.primitives.written()) {
        placePrimitiveHeaders(model.primitives, walk, layout);
        placePackets(model, walk, layout);
        layout.vertices =
            placePoints(model.vertices.size(), model.primitives.SharedVertexTotal, walk);
        layout.normals =
            placePoints(model.normals.size(), model.primitives.SharedNormalTotal, walk);
    }
    placeAnimation(model, walk, layout);
    placeImages(model, walk, layout);
    layout.fileSize = walk.here();
    return layout;
}

}  // namespace mqf2vxb
