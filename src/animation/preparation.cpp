#include "animation/preparation.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

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

/// The steps of one motion by their labels: a table of steps, each at the first free place from
/// its label's hash on. A map with a node for each label takes three times as long.
class Labels {
public:
    explicit Labels(const MotionRecord& motion)
        : motion_(motion), places_(std::bit_ceil(2 * motion.seqTable.size() + 1), none) {
        for (std::size_t i = 0; i < motion.seqTable.size(); ++i) {
            const std::string_view label = motion.seqTable[i].label;
            if (label.empty()) {
                continue;
            }
            std::uint32_t& place = places_[placeOf(label)];
            if (place != none) {
                refuse(motion, "two steps have the label " + std::string(label));
            }
            place = static_cast<std::uint32_t>(i);
        }
    }

    /// The number of the step with this label, or `otherwise`. A number above `largest` is
    /// refused.
    [[nodiscard]] std::uint32_t find(std::string_view name, std::uint32_t otherwise,
                                     std::uint32_t largest = largest16Bits) const {
        const std::uint32_t step = places_[placeOf(name)];
        if (step == none) {
            return otherwise;
        }
        const std::uint32_t number = motion_.seqTable[step].seqNo;
        if (number > largest) {
            refuse(motion_, "the step " + std::string(name) + " has the number " +
                                std::to_string(number) + ", which is above " +
                                std::to_string(largest));
        }
        return number;
    }

private:
    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    /// Where the step with this label stands, or would. The size is a power of two, and at most
    /// half of the places are taken.
    [[nodiscard]] std::size_t placeOf(std::string_view label) const {
        const std::size_t mask = places_.size() - 1;
        std::size_t place = std::hash<std::string_view>()(label) & mask;
        while (places_[place] != none && motion_.seqTable[places_[place]].label != label) {
            place = (place + 1) & mask;
        }
        return place;
    }

    const MotionRecord& motion_;
    std::vector<std::uint32_t> places_;
};

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
    std::uint64_t word = 0;
    for (MotionRecord& motion : motions) {
        for (AnimationSequenceRecord& step : motion.seqTable) {
            step.seqNo = seqNo++;
        }
        for (AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            group.firstPacketNo = packetNo;
            group.firstWord = word;
            packetNo += static_cast<std::uint32_t>(group.packetTable.size());
            word += wordsOf(group.type) * group.packetTable.size();
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
            const auto [place, isNew] = groups_.try_emplace(
                group.type, Group{&group, wordsOf(group.type), indexOf(group.type), false});
            place->second.repeated = !isNew;
        }
    }

    /// Completes the control word of a step, and turns its key frame from one of its type's group
    /// into one of all motions. One of a type that the motion has no group of is that already.
    void resolve(AnimationSequenceRecord& step) const {
        const auto found = groups_.find(step.type);
        if (found == groups_.end()) {
            complete(step, offsets_.offset(step.keyFrame), indexOf(step.type));
            return;
        }
        const Group& group = found->second;
        const AnimationPacketTypeRecord& record = *group.record;
        if (group.repeated) {
            refuse(motion_,
                   formatText("two TYPE groups have the type 0x%08x of a SEQ line", step.type));
        }
        if (step.keyFrame >= record.packetTable.size()) {
            refuse(motion_, formatText("a SEQ line names key frame %u of the type 0x%08x, which "
                                       "has %zu",
                                       step.keyFrame, step.type, record.packetTable.size()));
        }
        complete(step, record.firstWord + step.keyFrame * group.wordsEach, group.index);
        step.keyFrame += record.firstPacketNo;
    }

private:
    struct Group {
        const AnimationPacketTypeRecord* record;
        std::uint64_t wordsEach;
        std::uint32_t index;
        bool repeated;  ///< the motion has another group of the type
    };

    /// A type's index in the Animation Packet Type Table; 0 when it is not there.
    [[nodiscard]] std::uint32_t indexOf(PrimitiveTypeCode type) const {
        const auto found = typeIndex_.find(type);
        return found != typeIndex_.end() ? found->second : 0;
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
    numberSteps(motions);
    std::vector<PrimitiveTypeCode> aptype = packetTypes(motions);
    TypeIndex typeIndex;
    for (const PrimitiveTypeCode type : aptype) {
        typeIndex.emplace(type, static_cast<std::uint32_t>(typeIndex.size()));
    }
    const KeyFrameOffsets offsets(motions);
    for (MotionRecord& motion : motions) {
        checkSizes(motion);
        resolveNames(motion, Labels(motion));
        const KeyFrames keyFrames(motion, offsets, typeIndex);
        for (AnimationSequenceRecord& step : motion.seqTable) {
            if (step.kind == AnimationSequenceRecord::Kind::seq) {
                keyFrames.resolve(step);
            }
        }
    }
    return aptype;
}

}  // namespace mqf2vxb
