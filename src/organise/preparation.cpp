#include "organise/preparation.h"

#include <algorithm>
#include <optional>
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

/// Where every key frame stands in the matrix part.
class KeyFrameOffsets {
public:
    /// Numbers the groups of all motions.
    explicit KeyFrameOffsets(Table<MotionRecord>& motions) {
        for (MotionRecord& motion : motions) {
            for (AnimationPacketTypeRecord& group : motion.packetTypeTable) {
                group.firstPacketNo = number_;
                group.firstWord = words_;
                groups_.push_back(&group);
                number_ += group.packetNum;
                words_ += wordsOf(group.type) * group.packetNum;
            }
        }
    }

    /// The word offset of a key frame by its number over all motions; the words of all key frames
    /// when there is none of this number.
    [[nodiscard]] std::uint64_t offset(std::uint32_t keyFrame) const {
        if (keyFrame >= number_) {
            return words_;
        }
        const auto behind =
            std::upper_bound(groups_.begin(), groups_.end(), keyFrame,
                             [](std::uint32_t number, const AnimationPacketTypeRecord* group) {
                                 return number < group->firstPacketNo;
                             });
        const AnimationPacketTypeRecord& group = **(behind - 1);
        return group.firstWord + (keyFrame - group.firstPacketNo) * wordsOf(group.type);
    }

private:
    std::vector<const AnimationPacketTypeRecord*> groups_;
    std::uint32_t number_ = 0;
    std::uint64_t words_ = 0;
};

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
    KeyFrames(const MotionRecord& motion, const KeyFrameOffsets& offsets,
              const TypeIndex& typeIndex)
        : motion_(motion), offsets_(offsets), typeIndex_(typeIndex) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            const auto [place, isNew] = groups_.try_emplace(group.type, Group{&group, false});
            place->second.repeated = !isNew;
        }
    }

    /// The first type of the steps so far that has no size rule.
    [[nodiscard]] std::optional<PrimitiveTypeCode> unsizedType() const { return unsizedType_; }

    /// Completes the control word of a step. Its key frame, so far counted in the group of its type,
    /// is counted over all motions from here on; in a motion without such a group it stays as read.
    void resolve(AnimationSequenceRecord& step) {
        const StepType& type = types_.find(step.type, [&] { return newType(step.type); });
        if (type.group == nullptr) {
            complete(step, offsets_.offset(step.keyFrame), type.index);
            return;
        }
        if (step.keyFrame >= type.group->packetNum) {
            refuse(motion_, formatText("a SEQ line names key frame %d of the type 0x%08x, which "
                                       "has %u",
                                       static_cast<std::int32_t>(step.keyFrame), step.type,
                                       type.group->packetNum));
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
        if (findKeyFrameForm(type) == nullptr && !unsizedType_) {
            unsizedType_ = type;
        }
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

    const MotionRecord& motion_;
    const KeyFrameOffsets& offsets_;
    const TypeIndex& typeIndex_;
    std::unordered_map<PrimitiveTypeCode, Group> groups_;
    KeyMap<std::uint64_t, StepType> types_;
    std::optional<PrimitiveTypeCode> unsizedType_;
};

/// Refuses counts and sizes that their words cannot hold.
void checkSizes(const MotionRecord& motion) {
    const auto check = [&](const char* what, std::size_t number, std::uint64_t size) {
        if (number > format::largestNumber || size > format::largestSize) {
            refuse(motion, formatText("%zu %s in %zu words, and the format holds 32767 in 65535",
                                      number, what, size));
        }
    };
    for (const AnimationIndexRecord& index : motion.indexTable) {
        check("sequence headers", index.seqHeaderTable.size(), index.size());
    }
    check("coordinates", motion.indexTable.size(), format::motionSize(motion.indexSize()));
}

}  // namespace

void prepareAnimation(Model& model) {
    const KeyFrameOffsets offsets(model.motions);
    model.aptype = packetTypes(model.motions);
    TypeIndex typeIndex;
    for (const PrimitiveTypeCode type : model.aptype) {
        typeIndex.emplace(type, static_cast<std::uint32_t>(typeIndex.size()));
    }
    for (MotionRecord& motion : model.motions) {
        checkSizes(motion);
        KeyFrames keyFrames(motion, offsets, typeIndex);
        for (AnimationSequenceRecord& step : motion.seqTable) {
            if (step.showsKeyFrame()) {
                keyFrames.resolve(step);
            }
        }
        if (!model.unsizedStepType) {
            model.unsizedStepType = keyFrames.unsizedType();
        }
    }
}

}  // namespace mqf2vxb
