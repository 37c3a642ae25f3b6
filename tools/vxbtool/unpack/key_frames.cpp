#include "vxbtool/unpack/key_frames.h"

#include <algorithm>
#include <map>
#include <set>

#include "format/key_frame_forms.h"
#include "vxbtool/unpack/key_frame_words.h"
#include "vxbtool/unpack/shown_key_frames.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::PrimitiveTypeCode;
using mqf2vxb::VxbFile;

/// The key frames of one type that the steps of one motion show.
struct Span {
    std::size_t motion = 0;
    PrimitiveTypeCode type = 0;
    std::uint32_t first = 0;
    std::uint32_t end = 0;
    bool elsewhere = false;  ///< in another motion's groups
};

/// A group as it lies among the words of all key frames.
struct PlacedGroup {
    PrimitiveTypeCode type = 0;
    std::uint32_t first = 0;
    std::uint32_t end = 0;

    [[nodiscard]] std::uint32_t frames() const { return (end - first) / keyFrameWords(type); }
    /// Whether one of its key frames begins there.
    [[nodiscard]] bool has(std::uint32_t offset) const {
        return offset >= first && offset < end && (offset - first) % keyFrameWords(type) == 0;
    }
};

/// One attempt to make groups of the words of all key frames.
class KeyFrameGroups {
public:
    KeyFrameGroups(const VxbFile& file, const std::vector<std::uint32_t>& cuts,
                   const Reading& reading)
        : words_(file),
          animation_(file.animation),
          reading_(reading),
          shown_(shownKeyFrames(file, cuts, reading)),
          used_(cuts.size() - 1),
          groups_(cuts.size() - 1) {
        for (std::size_t m = 0; m < shown_.size(); ++m) {
            takeUsed(m);
        }
        makeSpans();
        placeGroups();
    }

    /// Whether the groups have the words and types that the file has.
    [[nodiscard]] bool placed() const { return right_; }

    /// Puts key-frame numbers into the motions' steps; false when a step shows something else then.
    bool numberSteps(std::vector<model_text::Motion>& motions) const {
        bool right = true;
        std::vector<const PlacedGroup*> all;
        std::vector<std::uint32_t> firstNumber;
        std::uint32_t number = 0;
        for (const std::vector<PlacedGroup>& groups : groups_) {
            for (const PlacedGroup& group : groups) {
                all.push_back(&group);
                firstNumber.push_back(number);
                number += group.frames();
            }
        }
        for (std::size_t m = 0; m < motions.size(); ++m) {
            std::map<PrimitiveTypeCode, const PlacedGroup*> own;
            for (const PlacedGroup& group : groups_[m]) {
                own.emplace(group.type, &group);
            }
            right = right && (!groups_[m].empty() || !used_[m].contains(bareType));
            for (const Shown& shown : shown_[m]) {
                model_text::Step& step = motions[m].steps[shown.step];
                step.type = shown.type;
                const auto found = own.find(shown.type);
                if (found != own.end() && found->second->has(shown.offset)) {
                    const PlacedGroup& group = *found->second;
                    step.keyFrame = (shown.offset - group.first) / keyFrameWords(group.type);
                    continue;
                }
                if (found != own.end()) {
                    step.type = unlistedType();
                    right = right && hasIndexZero(shown.type) && step.type != bareType;
                }
                // Without a group of its type a step counts the key frames of all motions.
                const auto behind =
                    std::upper_bound(all.begin(), all.end(), shown.offset,
                                     [](std::uint32_t offset, const PlacedGroup* group) {
                                         return offset < group->end;
                                     });
                step.keyFrame = number;
                if (behind != all.end()) {
                    const PlacedGroup& group = **behind;
                    const std::uint32_t within = shown.offset - group.first;
                    right = right && within % keyFrameWords(group.type) == 0;
                    step.keyFrame = firstNumber[static_cast<std::size_t>(behind - all.begin())] +
                                    within / keyFrameWords(group.type);
                } else {
                    right = right && shown.offset == animation_.keyFrameWords;
                }
            }
        }
        return right;
    }

    /// Puts the groups into the motions; one without any has an empty one.
    void putGroups(std::vector<model_text::Motion>& motions) const {
        for (std::size_t m = 0; m < motions.size(); ++m) {
            for (const PlacedGroup& group : groups_[m]) {
                motions[m].groups.push_back(words_.text(group.type, group.first, group.end));
            }
            if (groups_[m].empty()) {
                motions[m].groups.push_back({bareType, {}, {}});
            }
        }
    }

private:
    [[nodiscard]] std::uint32_t indexOf(PrimitiveTypeCode type) const {
        const auto found = std::find(animation_.types.begin(), animation_.types.end(), type);
        return static_cast<std::uint32_t>(found - animation_.types.begin());
    }

    /// Whether the packet type index of a type is 0, which types that are not listed have too.
    [[nodiscard]] bool hasIndexZero(PrimitiveTypeCode type) const {
        return animation_.types.empty() || type == animation_.types.front() ||
               indexOf(type) == animation_.types.size();
    }
    /// A type that no motion has key frames of; the bare one when there is none.
    [[nodiscard]] PrimitiveTypeCode unlistedType() const {
        constexpr PrimitiveTypeCode codes = 0x1000;
        for (PrimitiveTypeCode type = bareType + 1; type < bareType + codes; ++type) {
            if (mqf2vxb::findKeyFrameForm(type) != nullptr &&
                indexOf(type) == animation_.types.size()) {
                return type;
            }
        }
        return bareType;
    }

    void takeUsed(std::size_t motion) {
        for (const Shown& shown : shown_[motion]) {
            used_[motion].insert(shown.type);
        }
    }

    void makeSpans() {
        for (std::size_t m = 0; m < shown_.size(); ++m) {
            std::map<PrimitiveTypeCode, Span> byType;
            for (const Shown& shown : shown_[m]) {
                const std::uint32_t end = shown.offset + keyFrameWords(shown.type);
                Span& span =
                    byType.try_emplace(shown.type, Span{m, shown.type, shown.offset, end, false})
                        .first->second;
                span.first = std::min(span.first, shown.offset);
                span.end = std::max(span.end, end);
            }
            std::vector<Span> sorted;
            sorted.reserve(byType.size());
            for (const auto& [type, span] : byType) {
                sorted.push_back(span);
            }
            std::sort(sorted.begin(), sorted.end(),
                      [](const Span& a, const Span& b) { return a.first < b.first; });
            spans_.insert(spans_.end(), sorted.begin(), sorted.end());
        }
        // What does not follow the groups so far lies in one of them.
        if (reading_.backward) {
            std::uint32_t start = animation_.keyFrameWords;
            std::for_each(spans_.rbegin(), spans_.rend(), [&](Span& span) {
                span.elsewhere = span.end > start;
                start = span.elsewhere ? start : span.first;
            });
        } else {
            std::uint32_t end = 0;
            for (Span& span : spans_) {
                span.elsewhere = span.first < end || span.end > animation_.keyFrameWords;
                end = span.elsewhere ? end : span.end;
            }
        }
    }

    void placeGroups() {
        for (std::size_t m = 0, s = 0; m < groups_.size(); ++m) {
            listBefore(m, s);
            for (; s < spans_.size() && spans_[s].motion == m; ++s) {
                if (!spans_[s].elsewhere) {
                    placeSpan(m, spans_[s]);
                }
            }
        }
        if (groups_.empty()) {
            return;
        }
        const std::size_t last = groups_.size() - 1;
        fillGap(last, typesUpTo(static_cast<std::uint32_t>(animation_.types.size())), nullptr,
                animation_.keyFrameWords);
    }

    /// A type that is listed before another one and shown behind it has a group in a motion before.
    void listBefore(std::size_t motion, std::size_t span) {
        std::uint32_t listed = listed_;
        std::uint32_t before = listed_;
        for (; span < spans_.size() && spans_[span].motion == motion; ++span) {
            const std::uint32_t index = indexOf(spans_[span].type);
            if (spans_[span].elsewhere || index >= animation_.types.size()) {
                continue;
            }
            for (; listed < index; ++listed) {
                if (used_[motion].contains(animation_.types[listed])) {
                    before = listed + 1;
                }
            }
            listed = std::max(listed, index + 1);
        }
        if (motion == 0) {
            return;
        }
        for (; listed_ < before; ++listed_) {
            const PrimitiveTypeCode type = animation_.types[listed_];
            right_ = right_ && !used_[motion - 1].contains(type);
            addGroup(motion - 1, {type, position_, position_});
        }
    }

    /// The types that no group has listed yet, up to one.
    std::vector<PrimitiveTypeCode> typesUpTo(std::uint32_t index) {
        std::vector<PrimitiveTypeCode> types;
        for (; listed_ < index; ++listed_) {
            types.push_back(animation_.types[listed_]);
        }
        return types;
    }

    void placeSpan(std::size_t motion, const Span& span) {
        const std::uint32_t index = indexOf(span.type);
        std::vector<PrimitiveTypeCode> before;
        if (index < animation_.types.size() && index >= listed_) {
            before = typesUpTo(index);
            ++listed_;
        }
        PlacedGroup group{span.type, span.first, span.end};
        fillGap(motion, before, &group, span.first);
        right_ = right_ && words_.canBe(group.type, group.first, group.end);
        addGroup(motion, group);
        position_ = span.end;
    }

    void addGroup(std::size_t motion, const PlacedGroup& group) {
        groups_[motion].push_back(group);
        lastWithGroup_ = std::max(lastWithGroup_, motion);
    }

    /// Finds groups for the words up to `end`: what no others can have is a group of single words.
    void fillGap(std::size_t motion, const std::vector<PrimitiveTypeCode>& listed,
                 PlacedGroup* behind, std::uint32_t end) {
        std::vector<PlacedGroup>& last = groups_[lastWithGroup_];
        PlacedGroup* before = last.empty() ? nullptr : &last.back();
        if (end > position_ && coverGap(motion, before, listed, behind, end)) {
            return;
        }
        for (std::size_t i = 0; i < listed.size(); ++i) {
            PlacedGroup group{listed[i], position_, position_};
            right_ = right_ && !used_[motion].contains(group.type);
            const std::uint32_t words = keyFrameWords(group.type);
            // The last one takes what it can, one before it a key frame.
            const std::uint32_t room = end > position_ ? end - position_ : 0;
            const std::uint32_t most = i + 1 == listed.size()
                                           ? room / words * words
                                           : std::min(words, room / words * words);
            if (most > 0 && words_.canBe(group.type, position_, position_ + most)) {
                group.end += most;
            }
            position_ = group.end;
            addGroup(motion, group);
        }
        if (position_ < end) {
            right_ = right_ && !used_[motion].contains(bareType);
            addGroup(motion, {bareType, position_, end});
        }
        position_ = std::max(position_, end);
    }

    /// Gives the words up to `end` to the group before, to those of types that are only listed, and to
    /// the group behind, as whole key frames; false when they cannot be.
    bool coverGap(std::size_t motion, PlacedGroup* before,
                  const std::vector<PrimitiveTypeCode>& listed, PlacedGroup* behind,
                  std::uint32_t end) {
        std::vector<KeyFrameWords::Part> parts;
        if (before != nullptr) {
            parts.push_back({before->type, false});
        }
        for (const PrimitiveTypeCode type : listed) {
            parts.push_back({type, true});
        }
        if (behind != nullptr) {
            parts.push_back({behind->type, false});
        }
        if (!words_.cover(position_, end, parts)) {
            return false;
        }
        // Rather than have types without key frames, single words have a group.
        std::uint32_t first = position_;
        for (const KeyFrameWords::Part& part : parts) {
            if (part.ratherOne && part.end == first && !used_[motion].contains(bareType)) {
                return false;
            }
            first = part.end;
        }
        for (const KeyFrameWords::Part& part : parts) {
            if (part.ratherOne) {
                right_ = right_ && !used_[motion].contains(part.type);
                addGroup(motion, {part.type, position_, part.end});
            } else if (before != nullptr && &part == &parts.front()) {
                before->end = part.end;
            } else {
                behind->first = position_;
            }
            position_ = part.end;
        }
        return true;
    }

    KeyFrameWords words_;
    const mqf2vxb::Animation& animation_;
    Reading reading_;
    std::vector<std::vector<Shown>> shown_;          // by motion
    std::vector<std::set<PrimitiveTypeCode>> used_;  // types of SEQ steps, by motion
    std::vector<std::vector<PlacedGroup>> groups_;   // by motion
    std::vector<Span> spans_;
    std::size_t lastWithGroup_ = 0;  // the last motion that has a group, 0 when none has
    std::uint32_t position_ = 0;     // up to here the words have groups
    std::uint32_t listed_ = 0;       // types that have groups
    bool right_ = true;
};

}  // namespace

void unpackKeyFrames(const VxbFile& file, const std::vector<std::uint32_t>& cuts,
                     std::vector<model_text::Motion>& motions) {
    constexpr std::size_t mostStarts = 8;
    constexpr std::size_t mostTurns = 16;
    for (std::size_t bare = 0; bare < std::min(motions.size() + 1, mostTurns); ++bare) {
        for (const Reading::Zero zero : {Reading::Zero::listed, Reading::Zero::byDistance}) {
            const std::size_t starts = zero == Reading::Zero::byDistance ? mostStarts : 1;
            for (std::size_t start = 0; start < starts; ++start) {
                for (const bool backward : {false, true}) {
                    const Reading reading{zero, backward, motions.size() - bare, start};
                    const KeyFrameGroups groups(file, cuts, reading);
                    if (groups.placed() && groups.numberSteps(motions)) {
                        groups.putGroups(motions);
                        return;
                    }
                }
            }
        }
    }
    const KeyFrameGroups groups(file, cuts, {Reading::Zero::listed, false, motions.size(), 0});
    groups.numberSteps(motions);
    groups.putGroups(motions);
}

}  // namespace vxbtool::unpack
