#include "organise/preparation.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/diagnostics.h"
#include "base/key_map.h"
#include "format/format.h"
#include "format/key_frame_forms.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t largest16Bits = 0xFFFF;
constexpr unsigned packetTypeShift = 24;

[[noreturn]] void refuse(const MotionRecord& motion, const std::string& cause) {
    notCorrectData({motion.name}, cause);
}

std::uint64_t wordsOf(PrimitiveTypeCode type) {
    const KeyFrameForm* form = findKeyFrameForm(type);
    return form != nullptr ? form->words() : 0;
}

/// Key frames of one TYPE group, numbered over all motions.
struct KeyFrameGroup {
    std::uint32_t first;      ///< number of its first key frame
    std::uint64_t firstWord;  ///< where that one stands, from Matrix Top
    std::uint64_t wordsEach;
};

/// Where every key frame stands in the matrix part.
class KeyFrameOffsets {
public:
    explicit KeyFrameOffsets(const Table<MotionRecord>& motions) {
        for (const MotionRecord& motion : motions) {
            for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
                const std::uint64_t words = wordsOf(group.type);
                groups_.push_back({number_, words_, words});
                number_ += group.packetNum;
                words_ += words * group.packetNum;
            }
        }
    }

    /// The word offset of a key frame; of one that there is not, the words of all.
    [[nodiscard]] std::uint64_t offset(std::uint32_t keyFrame) const {
        if (keyFrame >= number_) {
            return words_;
        }
        const auto behind = std::upper_bound(
            groups_.begin(), groups_.end(), keyFrame,
            [](std::uint32_t number, const KeyFrameGroup& group) { return number < group.first; });
        const KeyFrameGroup& group = *(behind - 1);
        return group.firstWord + (keyFrame - group.first) * group.wordsEach;
    }

private:
    std::vector<KeyFrameGroup> groups_;
    std::uint32_t number_ = 0;
    std::uint64_t words_ = 0;
};

void numberKeyFrames(Table<MotionRecord>& motions) {
    std::uint32_t packetNo = 0;
    std::uint64_t word = 0;
    for (MotionRecord& motion : motions) {
        for (AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            group.firstPacketNo = packetNo;
            group.firstWord = word;
            packetNo += group.packetNum;
            word += wordsOf(group.type) * group.packetNum;
        }
    }
}

std::vector<PrimitiveTypeCode> packetTypes(const Table<MotionRecord>& motions) {
    std::vector<PrimitiveTypeCode> aptype;
    std::unordered_set<PrimitiveTypeCode> known{type_code::animation};
    for (const MotionRecord& motion : motions) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            if (known.insert(group.type).second) {
                aptype.push_back(group.type);
            }
        }
    }
    return aptype;
}

using TypeIndex = std::unordered_map<PrimitiveTypeCode, std::uint32_t>;

/// What the SEQ steps of one motion point into.
class KeyFrames {
public:
    KeyFrames(MotionRecord& motion, const KeyFrameOffsets& offsets, const TypeIndex& typeIndex)
        : motion_(motion), offsets_(offsets), typeIndex_(typeIndex) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            const auto [place, isNew] = groups_.try_emplace(group.type, Group{&group, false});
            place->second.repeated = !isNew;
        }
    }

    /// Completes the control word of a step, and turns its key frame from one of its type's group
    /// into one of all motions. One of a type that the motion has no group of is that already.
    void resolve(AnimationSequenceRecord& step) {
        const StepType& type = types_.find(step.type, [&] { return newType(step.type); });
        if (type.group == nullptr) {
            complete(step, offsets_.offset(step.keyFrame), type.index);
            return;
        }
        if (step.keyFrame >= type.group->packetNum) {
            refuse(motion_, formatText("a SEQ line names key frame %u of the type 0x%08x, which "
                                       "has %u",
                                       step.keyFrame, step.type, type.group->packetNum));
        }
        complete(step, type.group->firstWord + step.keyFrame * type.wordsEach, type.index);
        step.keyFrame += type.group->firstPacketNo;
    }

private:
    struct Group {
        const AnimationPacketTypeRecord* record;
        bool repeated;  ///< the motion has another group of the type
    };
    /// A type of SEQ lines.
    struct StepType {
        const AnimationPacketTypeRecord* group = nullptr;  ///< null when the motion has none
        std::uint64_t wordsEach = 0;
        std::uint32_t index = 0;  ///< in the Animation Packet Type Table; 0 when it is not there
    };

    StepType newType(PrimitiveTypeCode type) {
        motion_.stepTypes.append(type);
        StepType result;
        result.wordsEach = wordsOf(type);
        if (const auto found = typeIndex_.find(type); found != typeIndex_.end()) {
            result.index = found->second;
        }
        if (const auto found = groups_.find(type); found != groups_.end()) {
            if (found->second.repeated) {
                refuse(motion_,
                       formatText("two TYPE groups have the type 0x%08x of a SEQ line", type));
            }
            result.group = found->second.record;
        }
        return result;
    }

    void complete(AnimationSequenceRecord& step, std::uint64_t offset, std::uint32_t index) const {
        if (offset > largest16Bits) {
            refuse(motion_, "a SEQ line's key frame stands at word " + std::to_string(offset) +
                                ", which is above 65535");
        }
        step.control |= static_cast<std::uint32_t>(offset) | index << packetTypeShift;
    }

    MotionRecord& motion_;
    const KeyFrameOffsets& offsets_;
    const TypeIndex& typeIndex_;
    std::unordered_map<PrimitiveTypeCode, Group> groups_;
    KeyMap<StepType> types_;
};

/// Refuses counts and sizes that their words cannot hold.
void checkSizes(const MotionRecord& motion) {
    const auto check = [&](const char* what, std::size_t number, std::size_t size) {
        if (number > format::largestNumber || size > format::largestSize) {
            refuse(motion, formatText("%zu %s in %zu words, and the format holds 32767 in 65535",
                                      number, what, size));
        }
    };
    std::size_t size = 1;
    for (const AnimationIndexRecord& index : motion.indexTable) {
        const std::size_t headers = index.seqHeaderTable.size();
        check("sequence headers", headers, format::animationIndexSize + headers);
        size += format::animationIndexSize + headers;
    }
    check("coordinates", motion.indexTable.size(), size);
}

}  // namespace

std::vector<PrimitiveTypeCode> prepareAnimation(Table<MotionRecord>& motions) {
    numberKeyFrames(motions);
    std::vector<PrimitiveTypeCode> aptype = packetTypes(motions);
    TypeIndex typeIndex;
    for (const PrimitiveTypeCode type : aptype) {
        typeIndex.emplace(type, static_cast<std::uint32_t>(typeIndex.size()));
    }
    const KeyFrameOffsets offsets(motions);
    for (MotionRecord& motion : motions) {
        checkSizes(motion);
        KeyFrames keyFrames(motion, offsets, typeIndex);
        for (AnimationSequenceRecord& step : motion.seqTable) {
            if (step.showsKeyFrame()) {
                keyFrames.resolve(step);
            }
        }
    }
    return aptype;
}

}  // namespace mqf2vxb
