#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "model/file_contents.h"
#include "model/primitive_type.h"
#include "model/table.h"

namespace mqf2vxb {

/// One START or KEY2 line.
struct AnimationSequenceHeaderRecord {
    enum class Kind : std::uint8_t { start, key2 };
    Kind headerKind = Kind::start;
    std::string_view name;
    std::string_view name2;  ///< KEY2 only
    std::uint32_t value = 0;
};

/// One animated coordinate.
struct AnimationIndexRecord {
    std::int32_t coord = 0;
    std::string_view name;  ///< label of the sequence step that the coordinate starts with
    std::uint32_t startSeq = 0;
    Table<AnimationSequenceHeaderRecord> seqHeaderTable{"Animation Sequence Header Data Base"};
};

/// One SEQ, GOTO or END line.
struct AnimationSequenceRecord {
    enum class Kind : std::uint8_t { seq, goTo, end };
    Kind kind = Kind::seq;
    std::uint32_t seqNo = 0;  ///< number over all motions
    std::string_view label;
    std::string_view target;     ///< GOTO only
    std::uint32_t keyFrame = 0;  ///< SEQ only: in its type's group, then over all motions
    PrimitiveTypeCode type = 0;  ///< SEQ only
    std::uint32_t control = 0;
};

/// One key frame: the values of its line in their order.
struct AnimationPacketRecord {
    std::array<float, 9> values{};
};

/// One TYPE line and the key frames behind it.
struct AnimationPacketTypeRecord {
    PrimitiveTypeCode type = 0;
    std::uint32_t firstPacketNo = 0;  ///< its first key frame's number over all motions
    std::uint64_t firstWord = 0;      ///< where that one stands, from Matrix Top
    Table<AnimationPacketRecord> packetTable{"Animation Packet Data Base"};
};

/// One slot of the motion list.
struct MotionRecord {
    std::string name;
    bool named = false;  ///< a line of the MQF file names this slot
    PrimitiveTypeCode type = 0;
    Table<AnimationIndexRecord> indexTable{"Animation Index Data Base"};
    Table<AnimationSequenceRecord> seqTable{"Animation Sequence Data Base"};
    Table<AnimationPacketTypeRecord> packetTypeTable{"Animation Packet Type Data Base"};
    FileContents file;  ///< what the labels and names are views into
};

}  // namespace mqf2vxb
