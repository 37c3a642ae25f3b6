#include "animation/preparation.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "animation/key_frame_forms.h"
#include "driver/diagnostics.h"
#include "output/format.h"

namespace mqf2vxb {
namespace {

constexpr std::uint32_t largest16Bits = 0xFFFF;
constexpr unsigned packetTypeShift = 24;
constexpr unsigned highHalf = 16;

[[noreturn]] void refuse(const MotionRecord& motion, const std::string& cause) {
    notCorrectData({motion.name}, cause);
}

/// The steps of one motion by their labels.
class Labels {
public:
    explicit Labels(const MotionRecord& motion) : motion_(motion) {
        for (const AnimationSequenceRecord& step : motion.seqTable) {
            if (!step.label.empty() && !seqNo_.try_emplace(step.label, step.seqNo).second) {
                refuse(motion, "two steps have the label " + step.label);
            }
        }
    }

    /// The number of the step with this label, or `otherwise`. A number above `largest` is
    /// refused.
    [[nodiscard]] std::uint32_t find(const std::string& name, std::uint32_t otherwise,
                                     std::uint32_t largest = largest16Bits) const {
        const auto found = seqNo_.find(name);
        if (found == seqNo_.end()) {
            return otherwise;
        }
        if (found->second > largest) {
            refuse(motion_, "the step " + name + " has the number " +
                                std::to_string(found->second) + ", which is above " +
                                std::to_string(largest));
        }
        return found->second;
    }

private:
    const MotionRecord& motion_;
    std::unordered_map<std::string_view, std::uint32_t> seqNo_;
};

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
                const KeyFrameForm* form = findKeyFrameForm(group.type);
                const std::uint64_t words = form != nullptr ? form->words() : 0;
                groups_.push_back({number_, words_, words});
                number_ += static_cast<std::uint32_t>(group.packetTable.size());
                words_ += words * group.packetTable.size();
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

void numberSteps(Table<MotionRecord>& motions) {
    std::uint32_t seqNo = 0;
    std::uint32_t packetNo = 0;
    for (MotionRecord& motion : motions) {
        for (AnimationSequenceRecord& step : motion.seqTable) {
            step.seqNo = seqNo++;
        }
        for (AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            group.firstPacketNo = packetNo;
            packetNo += static_cast<std::uint32_t>(group.packetTable.size());
        }
    }
}

void resolveNames(MotionRecord& motion, const Labels& labels) {
    for (AnimationIndexRecord& index : motion.indexTable) {
        index.startSeq =
            labels.find(index.name, format::unresolvedSequence, format::unresolvedSequence - 1);
        for (AnimationSequenceHeaderRecord& header : index.seqHeaderTable) {
            header.value |= labels.find(header.name, 0);
            const bool second = header.headerKind == AnimationSequenceHeaderRecord::Kind::key2;
            if (second && header.name2 != header.name) {
                header.value |= labels.find(header.name2, 0) << highHalf;
            }
        }
    }
    for (AnimationSequenceRecord& step : motion.seqTable) {
        if (step.kind == AnimationSequenceRecord::Kind::goTo) {
            step.control |= labels.find(step.target, 0);
        }
    }
}

/// The key-frame groups of one motion by their types.
using GroupsByType = std::unordered_map<PrimitiveTypeCode, const AnimationPacketTypeRecord*>;

/// Turns a step's key frame from one of its type's group into one of all motions. One of a type
/// that the motion has no group of is that already.
void resolveKeyFrame(const MotionRecord& motion, const GroupsByType& groups,
                     const std::unordered_set<PrimitiveTypeCode>& repeated,
                     AnimationSequenceRecord& step) {
    const auto group = groups.find(step.type);
    if (group == groups.end()) {
        return;
    }
    if (repeated.contains(step.type)) {
        refuse(motion, formatText("two TYPE groups have the type 0x%08x of a SEQ line", step.type));
    }
    if (step.keyFrame >= group->second->packetTable.size()) {
        refuse(motion, formatText("a SEQ line names key frame %u of the type 0x%08x, which has "
                                  "%zu",
                                  step.keyFrame, step.type, group->second->packetTable.size()));
    }
    step.keyFrame += group->second->firstPacketNo;
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

/// Completes the control words of the SEQ steps of one motion.
void resolveSteps(MotionRecord& motion, const KeyFrameOffsets& offsets,
                  const std::unordered_map<PrimitiveTypeCode, std::uint32_t>& typeIndex) {
    GroupsByType groups;
    std::unordered_set<PrimitiveTypeCode> repeated;
    for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
        if (!groups.try_emplace(group.type, &group).second) {
            repeated.insert(group.type);
        }
    }
    for (AnimationSequenceRecord& step : motion.seqTable) {
        if (step.kind != AnimationSequenceRecord::Kind::seq) {
            continue;
        }
        resolveKeyFrame(motion, groups, repeated, step);
        const std::uint64_t offset = offsets.offset(step.keyFrame);
        if (offset > largest16Bits) {
            refuse(motion, "a SEQ line's key frame stands at word " + std::to_string(offset) +
                               ", which is above 65535");
        }
        step.control |= static_cast<std::uint32_t>(offset);
        const auto index = typeIndex.find(step.type);
        if (index != typeIndex.end()) {
            step.control |= index->second << packetTypeShift;
        }
    }
}

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
    numberSteps(motions);
    std::vector<PrimitiveTypeCode> aptype = packetTypes(motions);
    std::unordered_map<PrimitiveTypeCode, std::uint32_t> typeIndex;
    for (const PrimitiveTypeCode type : aptype) {
        typeIndex.emplace(type, static_cast<std::uint32_t>(typeIndex.size()));
    }
    const KeyFrameOffsets offsets(motions);
    for (MotionRecord& motion : motions) {
        checkSizes(motion);
        resolveNames(motion, Labels(motion));
        resolveSteps(motion, offsets, typeIndex);
    }
    return aptype;
}

}  // namespace mqf2vxb
