#include "vxbtool/unpack/key_frames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>

#include "format/key_frame_forms.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::ControlKind;
using mqf2vxb::ControlWord;
using mqf2vxb::findKeyFrameForm;
using mqf2vxb::KeyFrameForm;
using mqf2vxb::PrimitiveTypeCode;
using mqf2vxb::VxbFile;

constexpr PrimitiveTypeCode bareType = mqf2vxb::type_code::animation;

std::uint32_t wordsOf(PrimitiveTypeCode type) {
    const KeyFrameForm* const form = findKeyFrameForm(type);
    return form != nullptr ? static_cast<std::uint32_t>(form->words()) : 1;
}

/// The float that becomes this word; nothing when none does.
std::optional<float> wideValue(std::uint32_t word) {
    constexpr double wrap = 4294967296.0;
    const double plain = word;
    // The smaller of the two in size is what a person would write.
    const std::array<double, 2> values{plain < wrap / 2 ? plain : plain - wrap,
                                       plain < wrap / 2 ? plain - wrap : plain};
    for (const double value : values) {
        if (static_cast<double>(static_cast<float>(value)) == value) {
            return static_cast<float>(value);
        }
    }
    return std::nullopt;
}

/// How the two meanings of the packet type index 0 are told apart, and in which direction the
/// motions are gone through when one shows the key frames of another.
struct Reading {
    enum class Zero : std::uint8_t { listed, byDistance };
    Zero zero = Zero::listed;
    bool backward = false;
    std::size_t bareFrom = 0;  ///< from this motion on the index means the bare type
    std::size_t start = 0;  ///< which of the places that have room is the first of the listed type
};

/// What a SEQ step shows.
struct Shown {
    std::uint32_t step = 0;  ///< within its motion
    std::uint32_t offset = 0;
    PrimitiveTypeCode type = 0;
};

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

    [[nodiscard]] std::uint32_t frames() const { return (end - first) / wordsOf(type); }
};

/// One attempt to make groups of the words of all key frames.
class KeyFrameGroups {
public:
    KeyFrameGroups(const VxbFile& file, const std::vector<std::uint32_t>& cuts,
                   const Reading& reading)
        : file_(file),
          animation_(file.animation),
          reading_(reading),
          shown_(cuts.size() - 1),
          used_(cuts.size() - 1),
          groups_(cuts.size() - 1) {
        for (std::size_t m = 0; m + 1 < cuts.size(); ++m) {
            takeSteps(m, cuts[m], cuts[m + 1]);
        }
        makeSpans();
        placeGroups();
    }

    /// Puts groups and key-frame numbers into the motions; false when a step shows something else
    /// then.
    bool fill(std::vector<model_text::Motion>& motions) const {
        bool right = right_;
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
            motions[m].groups.clear();
            std::map<PrimitiveTypeCode, const PlacedGroup*> own;
            for (const PlacedGroup& group : groups_[m]) {
                own.emplace(group.type, &group);
                motions[m].groups.push_back(groupText(group));
            }
            if (groups_[m].empty()) {
                motions[m].groups.push_back({bareType, {}, {}});
                right = right && !used_[m].contains(bareType);
            }
            for (const Shown& shown : shown_[m]) {
                model_text::Step& step = motions[m].steps[shown.step];
                step.type = shown.type;
                const auto found = own.find(shown.type);
                if (found != own.end()) {
                    const PlacedGroup& group = *found->second;
                    const std::uint32_t words = wordsOf(group.type);
                    right = right && shown.offset >= group.first && shown.offset < group.end &&
                            (shown.offset - group.first) % words == 0;
                    step.keyFrame = (shown.offset - group.first) / words;
                    continue;
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
                    right = right && within % wordsOf(group.type) == 0;
                    step.keyFrame = firstNumber[static_cast<std::size_t>(behind - all.begin())] +
                                    within / wordsOf(group.type);
                } else {
                    right = right && shown.offset == animation_.keyFrameWords;
                }
            }
        }
        return right;
    }

private:
    [[nodiscard]] std::uint32_t indexOf(PrimitiveTypeCode type) const {
        const auto found = std::find(animation_.types.begin(), animation_.types.end(), type);
        return static_cast<std::uint32_t>(found - animation_.types.begin());
    }

    void takeSteps(std::size_t motion, std::uint32_t first, std::uint32_t end) {
        std::vector<std::uint32_t> offsets;
        for (std::uint32_t s = first; s < end; ++s) {
            const ControlWord control =
                mqf2vxb::controlWord(file_.words[animation_.controlOffset + s]);
            if (control.kind == ControlKind::keyFrame) {
                const PrimitiveTypeCode type = control.typeIndex < animation_.types.size()
                                                   ? animation_.types[control.typeIndex]
                                                   : bareType;
                shown_[motion].push_back({s - first, control.target, type});
                offsets.push_back(control.target);
            }
        }
        const bool bare = motion >= reading_.bareFrom;
        if (animation_.types.empty() || (reading_.zero == Reading::Zero::listed && !bare)) {
            takeUsed(motion);
            return;
        }
        // A key frame of the listed type has room for its words, and a whole number of such frames
        // between it and the others.
        std::sort(offsets.begin(), offsets.end());
        const PrimitiveTypeCode listed = animation_.types.front();
        const std::uint32_t words = wordsOf(listed);
        std::set<std::uint32_t> starts;
        const auto hasRoom = [&](std::uint32_t offset) {
            const auto next = std::upper_bound(offsets.begin(), offsets.end(), offset);
            const std::uint32_t limit = next != offsets.end() ? *next : animation_.keyFrameWords;
            return limit >= offset && limit - offset >= words;
        };
        for (const Shown& shown : shown_[motion]) {
            if (shown.type == listed && hasRoom(shown.offset)) {
                starts.insert(shown.offset);
            }
        }
        std::optional<std::uint32_t> start;
        if (!starts.empty()) {
            const std::size_t wanted = std::min(reading_.start, starts.size() - 1);
            start = *std::next(starts.begin(), static_cast<std::ptrdiff_t>(wanted));
        }
        // Key frames of one type lie side by side.
        std::uint32_t limit = animation_.keyFrameWords;
        for (const Shown& shown : shown_[motion]) {
            if (shown.type != listed && start && shown.offset > *start) {
                limit = std::min(limit, shown.offset);
            }
        }
        for (Shown& shown : shown_[motion]) {
            const bool fits = !bare && start && shown.offset >= *start && shown.offset < limit &&
                              (shown.offset - *start) % words == 0 && hasRoom(shown.offset);
            if (shown.type == listed && !fits) {
                shown.type = bareType;
            }
        }
        takeUsed(motion);
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
                const std::uint32_t end = shown.offset + wordsOf(shown.type);
                Span& span =
                    byType.try_emplace(shown.type, Span{m, shown.type, shown.offset, end, false})
                        .first->second;
                span.first = std::min(span.first, shown.offset);
                span.end = std::max(span.end, end);
            }
            std::vector<Span> sorted;
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
            for (auto span = spans_.rbegin(); span != spans_.rend(); ++span) {
                span->elsewhere = span->end > start;
                start = span->elsewhere ? start : span->first;
            }
        } else {
            std::uint32_t end = 0;
            for (Span& span : spans_) {
                span.elsewhere = span.first < end || span.end > animation_.keyFrameWords;
                end = span.elsewhere ? end : span.end;
            }
        }
    }

    /// Whether the words make whole key frames of a type.
    [[nodiscard]] bool canBe(PrimitiveTypeCode type, std::uint32_t first, std::uint32_t end) const {
        const KeyFrameForm* const form = findKeyFrameForm(type);
        if (form == nullptr || first > end || (end - first) % form->words() != 0) {
            return false;
        }
        for (std::uint32_t frame = first; frame < end;
             frame += static_cast<std::uint32_t>(form->words())) {
            for (std::uint32_t i = 0; i < form->wideValues; ++i) {
                if (!wideValue(word(frame + i))) {
                    return false;
                }
            }
            const auto halves = static_cast<std::uint32_t>(form->words());
            if (form->halfValues % 2 != 0 && word(frame + halves - 1) >> 16U != 0) {
                return false;
            }
        }
        return true;
    }

    [[nodiscard]] std::uint32_t word(std::uint32_t offset) const {
        return file_.words[animation_.keyFrameOffset + offset];
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
            groups_[motion - 1].push_back({type, position_, position_});
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
        right_ = right_ && canBe(group.type, group.first, group.end);
        groups_[motion].push_back(group);
        position_ = span.end;
    }

    /// Gives the words up to `end` to the group before, to those of types that are only listed, or
    /// to the group behind; else they are single words.
    void fillGap(std::size_t motion, const std::vector<PrimitiveTypeCode>& listed,
                 PlacedGroup* behind, std::uint32_t end) {
        PlacedGroup* before = nullptr;
        for (std::vector<PlacedGroup>& groups : groups_) {
            before = groups.empty() ? before : &groups.back();
        }
        if (end > position_ && coverGap(motion, before, listed, behind, end)) {
            return;
        }
        for (std::size_t i = 0; i < listed.size(); ++i) {
            PlacedGroup group{listed[i], position_, position_};
            right_ = right_ && !used_[motion].contains(group.type);
            const std::uint32_t words = wordsOf(group.type);
            // The last one takes what it can, one before it a key frame.
            const std::uint32_t room = end > position_ ? end - position_ : 0;
            const std::uint32_t most = i + 1 == listed.size()
                                           ? room / words * words
                                           : std::min(words, room / words * words);
            if (most > 0 && canBe(group.type, position_, position_ + most)) {
                group.end += most;
            }
            position_ = group.end;
            groups_[motion].push_back(group);
        }
        if (position_ < end) {
            right_ = right_ && !used_[motion].contains(bareType);
            groups_[motion].push_back({bareType, position_, end});
        }
        position_ = std::max(position_, end);
    }

    /// Covers the words up to `end` with whole key frames of the group before, of types that are only
    /// listed, each of which rather has one, and of the group behind; false when they cannot be.
    bool coverGap(std::size_t motion, PlacedGroup* before,
                  const std::vector<PrimitiveTypeCode>& listed, PlacedGroup* behind,
                  std::uint32_t end) {
        std::vector<PrimitiveTypeCode> types = listed;
        if (before != nullptr) {
            types.insert(types.begin(), before->type);
        }
        if (behind != nullptr) {
            types.push_back(behind->type);
        }
        const std::uint32_t first = position_;
        const std::size_t room = end - first;
        // Whether the types from one on can cover the words from one on.
        std::vector<std::vector<bool>> covers(types.size() + 1, std::vector<bool>(room + 1));
        covers.back()[room] = true;
        const auto isFrame = [&](std::size_t type, std::size_t at) {
            const std::size_t behindIt = at + wordsOf(types[type]);
            return behindIt <= room && canBe(types[type], first + static_cast<std::uint32_t>(at),
                                             first + static_cast<std::uint32_t>(behindIt));
        };
        for (std::size_t t = types.size(); t-- > 0;) {
            for (std::size_t at = room + 1; at-- > 0;) {
                covers[t][at] =
                    covers[t + 1][at] || (isFrame(t, at) && covers[t][at + wordsOf(types[t])]);
            }
        }
        if (types.empty() || !covers.front().front()) {
            return false;
        }
        std::size_t at = 0;
        for (std::size_t t = 0; t < types.size(); ++t) {
            const std::size_t start = at;
            const std::size_t words = wordsOf(types[t]);
            const bool isListed = t >= (before != nullptr ? 1U : 0U) &&
                                  t < types.size() - (behind != nullptr ? 1U : 0U);
            const auto goesOn = [&] { return isFrame(t, at) && covers[t][at + words]; };
            at += isListed && goesOn() ? words : 0;
            while (!covers[t + 1][at]) {
                at += words;
            }
            const auto startWord = first + static_cast<std::uint32_t>(start);
            position_ = first + static_cast<std::uint32_t>(at);
            if (isListed) {
                right_ = right_ && !used_[motion].contains(types[t]);
                groups_[motion].push_back({types[t], startWord, position_});
            } else if (before != nullptr && t == 0) {
                before->end = position_;
            } else {
                behind->first = startWord;
            }
        }
        return true;
    }

    [[nodiscard]] model_text::KeyFrameGroup groupText(const PlacedGroup& group) const {
        model_text::KeyFrameGroup text;
        text.type = group.type;
        const KeyFrameForm* const form = findKeyFrameForm(group.type);
        if (form == nullptr) {
            return text;
        }
        const auto words = static_cast<std::uint32_t>(form->words());
        for (std::uint32_t frame = group.first; frame + words <= group.end; frame += words) {
            for (std::uint32_t i = 0; i < form->wideValues; ++i) {
                const std::uint32_t value = word(frame + i);
                text.values.push_back(wideValue(value).value_or(
                    static_cast<float>(static_cast<std::int32_t>(value))));
            }
            for (std::uint32_t i = 0; i < form->halfValues; ++i) {
                const std::uint32_t both =
                    word(frame + static_cast<std::uint32_t>(form->wideValues) + i / 2);
                text.values.push_back(
                    static_cast<float>(static_cast<std::int16_t>(i % 2 == 0 ? both : both >> 16U)));
            }
        }
        return text;
    }

    const VxbFile& file_;
    const mqf2vxb::Animation& animation_;
    Reading reading_;
    std::vector<std::vector<Shown>> shown_;          // by motion
    std::vector<std::set<PrimitiveTypeCode>> used_;  // types of SEQ steps, by motion
    std::vector<std::vector<PlacedGroup>> groups_;   // by motion
    std::vector<Span> spans_;
    std::uint32_t position_ = 0;  // up to here the words have groups
    std::uint32_t listed_ = 0;    // types that have groups
    bool right_ = true;
};

}  // namespace

void unpackKeyFrames(const VxbFile& file, const std::vector<std::uint32_t>& cuts,
                     std::vector<model_text::Motion>& motions) {
    constexpr std::size_t mostStarts = 8;
    constexpr std::size_t mostTurns = 16;
    for (const Reading::Zero zero : {Reading::Zero::listed, Reading::Zero::byDistance}) {
        const std::size_t starts = zero == Reading::Zero::byDistance ? mostStarts : 1;
        for (std::size_t bare = 0; bare < std::min(motions.size() + 1, mostTurns); ++bare) {
            for (std::size_t start = 0; start < starts; ++start) {
                for (const bool backward : {false, true}) {
                    const Reading reading{zero, backward, motions.size() - bare, start};
                    if (KeyFrameGroups(file, cuts, reading).fill(motions)) {
                        return;
                    }
                }
            }
        }
    }
    KeyFrameGroups(file, cuts, {Reading::Zero::listed, false, motions.size(), 0}).fill(motions);
}

}  // namespace vxbtool::unpack
