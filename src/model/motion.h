#pragma once

#include <cstdint>
#include <string>

#include "base/table.h"
#include "format/format.h"
#include "format/primitive_type.h"

namespace mqf2vxb {

/// One START or KEY2 line.
struct AnimationSequenceHeaderRecord {
    std::uint32_t value = 0;  ///< what its line says, and the number of each step that it names
};

/// One animated coordinate.
struct AnimationIndexRecord {
    std::int32_t coord = 0;
    std::uint32_t startSeq = 0;  ///< number of the step that it starts with, over all motions
    Table<AnimationSequenceHeaderRecord> seqHeaderTable{"Animation Sequence Header Data Base"};

    /// The words of its record in the file.
    [[nodiscard]] std::uint64_t size() const {
        return format::animationIndexSize + seqHeaderTable.size();
    }
};

/// One SEQ, GOTO or END line.
struct AnimationSequenceRecord {
    /// SEQ only: the number of its key frame, as read; organisation counts it over all motions.
    std::uint32_t keyFrame = 0;
    PrimitiveTypeCode type = 0;  ///< 0 unless this is a SEQ line
    std::uint32_t control = 0;

    [[nodiscard]] bool showsKeyFrame() const { return type != 0; }
};

/// One TYPE line and the key frames behind it.
struct AnimationPacketTypeRecord {
    PrimitiveTypeCode type = 0;
    std::uint32_t firstPacketNo = 0;  ///< its first key frame's number over all motions
    std::uint64_t firstWord = 0;      ///< where that one stands, from Matrix Top
    std::uint32_t packetNum = 0;      ///< key frames
    /// The values of their lines, one behind the other; each has as many as its form says.
    Table<float> packetTable{"Animation Packet Data Base"};
};

/// One slot of the motion list.
struct MotionRecord {
    std::string name;
    bool named = false;  ///< a line of the MQF file names this slot
    PrimitiveTypeCode type = 0;
    Table<AnimationIndexRecord> indexTable{"Animation Index Data Base"};
    Table<AnimationSequenceRecord> seqTable{"Animation Sequence Data Base"};
    Table<AnimationPacketTypeRecord> packetTypeTable{"Animation Packet Type Data Base"};

    /// The words of all index records.
    [[nodiscard]] std::uint64_t indexSize() const {
        std::uint64_t size = 0;
        for (const AnimationIndexRecord& index : indexTable) {
            size += index.size();
        }
        return size;
    }
};

}  // namespace mqf2vxb
