#include "writers/animation_section.h"

#include <span>
#include <string_view>
#include <utility>

#include "base/diagnostics.h"
#include "format/fixed_point.h"
#include "format/format.h"
#include "format/key_frame_forms.h"

namespace mqf2vxb {
namespace {

void writeIndex(const AnimationIndexRecord& index, OutputWordStream& stream) {
    const auto headers = static_cast<std::uint32_t>(index.seqHeaderTable.size());
    const auto coordinate = static_cast<std::uint32_t>(index.coord);
    constexpr auto recordSize = static_cast<std::uint32_t>(format::coordinateSize);
    stream.putWord(format::coordinatePointer << 16U | (recordSize * coordinate + 1),
                   "/* Coordinate Pointer Offset, Coordinate Offset  */");
    stream.putWord(headers << 16U | static_cast<std::uint32_t>(index.size()),
                   "/* Sequence Header Number, Size  */");
    stream.putWord(0, "/* Sequence Pointer  */");
    stream.putWord(index.startSeq << 16U);
    stream.putWord(0);
    stream.putWord(0);
    for (std::uint32_t k = 0; k < headers; ++k) {
        stream.putWord(index.seqHeaderTable[k].value, "/* Sequence Header %d*/",
                       static_cast<std::int32_t>(k));
    }
}

void writeMotion(const MotionRecord& motion, bool first, OutputWordStream& stream) {
    const std::uint64_t size = format::motionSize(motion.indexSize());
    stream.putWord(motion.type | (first ? type_code::first : 0), "/* Animation Type */");
    stream.putWord(format::numberAndSize(static_cast<std::uint32_t>(motion.indexTable.size()),
                                         static_cast<std::uint32_t>(size)),
                   "/* Index Number, Size */");
    for (const AnimationIndexRecord& index : motion.indexTable) {
        writeIndex(index, stream);
    }
}

void writePacketTypes(const std::vector<PrimitiveTypeCode>& aptype, OutputWordStream& stream) {
    stream.putWord(static_cast<std::uint32_t>(aptype.size()) | format::bit31,
                   "/* Animation Packet Type Number */");
    std::string_view comment = "/* Animation Packet Type */";
    for (const PrimitiveTypeCode type : aptype) {
        stream.putWord(type, std::exchange(comment, {}));
    }
}

/// The top comment stands on the first motion's first step, and nowhere when it has none.
void writeControls(const Table<MotionRecord>& motions, OutputWordStream& stream) {
    std::string_view comment = "/* Control Top */";
    for (const MotionRecord& motion : motions) {
        for (const AnimationSequenceRecord& step : motion.seqTable) {
            stream.putWord(step.control, std::exchange(comment, {}));
        }
        comment = {};
    }
}

void writeKeyFrame(std::span<const float> values, const KeyFrameForm& form,
                   std::string_view comment, OutputWordStream& stream) {
    std::size_t i = 0;
    while (i < form.wideValues) {
        stream.putWord(truncated(values[i++]), std::exchange(comment, {}));
    }
    while (i < values.size()) {
        const float low = values[i++];
        const float high = i < values.size() ? values[i++] : 0.0F;
        stream.putWord(truncatedPair(low, high), std::exchange(comment, {}));
    }
}

/// The top comment stands on the first group's first key frame, and nowhere when it has none.
void writeKeyFrames(const Table<MotionRecord>& motions, OutputWordStream& stream) {
    std::string_view comment = "/* Matrix Top */";
    for (const MotionRecord& motion : motions) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            const KeyFrameForm* form = findKeyFrameForm(group.type);
            if (form == nullptr) {
                typeMismatch("anim", group.type);
            }
            for (std::size_t i = 0; i < group.packetTable.size(); i += form->values()) {
                writeKeyFrame(group.packetTable.records().subspan(i, form->values()), *form,
                              std::exchange(comment, {}), stream);
            }
            comment = {};
        }
    }
}

}  // namespace

void writeAnimationSection(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream) {
    stream.checkPosition(layout.animationSection, "animation section");
    stream.putWord(imagesWritten(model) ? layout.imageSection : format::endOfChain,
                   "/* Next Primitive Pointer */");
    stream.putWord(layout.animationHeader.offset,
                   "/* Animation Primitive Global Header Pointer */");
    stream.putWord(static_cast<std::uint32_t>(model.motions.size()) | format::bit31,
                   "/* Animation Type Number */");
    for (std::size_t m = 0; m < model.motions.size(); ++m) {
        writeMotion(model.motions[m], m == 0, stream);
    }
    stream.checkPosition(layout.complementFunctionTop, "packet type table");
    writePacketTypes(model.aptype, stream);
    stream.checkPosition(layout.controlTop, "control part");
    writeControls(model.motions, stream);
    stream.checkPosition(layout.matrixTop, "matrix part");
    writeKeyFrames(model.motions, stream);
}

}  // namespace mqf2vxb
