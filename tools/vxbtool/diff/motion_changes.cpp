#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include <fmt/core.h>

#include "format/format.h"
#include "vxb/key_frame_decoder.h"
#include "vxbtool/diff/compare.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/motion_steps.h"

namespace vxbtool::diff {
namespace {

using namespace mqf2vxb;

/// One file's motions, with the words of their key frames.
class Motions {
public:
    explicit Motions(const VxbFile& file)
        : file_(file), animation_(file.animation), ranges_(stepsOfMotions(file.animation)) {
        const Region frames{Part::keyFrames, 0, animation_.keyFrameOffset,
                            animation_.keyFrameWords};
        forEachKeyFrame(file, frames, [&](const KeyFramePiece& piece) {
            if (piece.used) {
                wordsAt_[piece.offset - frames.offset] = piece.words;
            } else {
                unused_.push_back(file.words[piece.offset]);
            }
        });
    }

    [[nodiscard]] std::size_t number() const { return ranges_.size(); }
    [[nodiscard]] const StepRange& range(std::size_t motion) const { return ranges_[motion]; }
    [[nodiscard]] std::uint32_t stepNum(std::size_t motion) const {
        return ranges_[motion].end - ranges_[motion].first;
    }
    [[nodiscard]] std::uint32_t word(std::uint32_t step) const {
        return file_.words[animation_.controlOffset + step];
    }
    [[nodiscard]] std::span<const AnimatedCoordinate> coordinates(std::size_t motion) const {
        const Motion& of = animation_.motions[motion];
        return std::span(animation_.coordinates).subspan(of.firstCoordinate, of.coordinateNum);
    }
    [[nodiscard]] std::span<const std::uint32_t> headers(const AnimatedCoordinate& animated) const {
        constexpr std::uint32_t before = 6;  // words of an animated coordinate before its headers
        return std::span(file_.words).subspan(animated.offset + before, animated.sequenceNum);
    }
    /// The words of the key frame that a control word names.
    [[nodiscard]] std::span<const std::uint32_t> keyFrame(const ControlWord& control) const {
        // Frames of several types may begin in one place, or inside each other. How many words one of
        // the first type has depends on what follows it.
        const auto found = wordsAt_.find(control.target);
        const KeyFrameForm* form = keyFrameForm(animation_, control.typeIndex);
        std::size_t words = form != nullptr ? form->words() : 1;
        if (control.typeIndex == 0 && found != wordsAt_.end()) {
            words = found->second;
        }
        if (control.target >= animation_.keyFrameWords) {
            return {};
        }
        words = std::min<std::size_t>(words, animation_.keyFrameWords - control.target);
        return std::span(file_.words).subspan(animation_.keyFrameOffset + control.target, words);
    }
    [[nodiscard]] PrimitiveTypeCode type(const ControlWord& control) const {
        return control.typeIndex < animation_.types.size() ? animation_.types[control.typeIndex]
                                                           : 0;
    }
    [[nodiscard]] const std::vector<PrimitiveTypeCode>& types() const { return animation_.types; }
    /// Words of key frames that no step names.
    [[nodiscard]] const std::vector<std::uint32_t>& unused() const { return unused_; }

    /// The steps in front of those that the motions name, each by what it says: a key frame by its
    /// words, wherever they stand.
    [[nodiscard]] std::vector<std::vector<std::uint32_t>> unnamed() const {
        std::uint32_t end = animation_.controlNum;
        for (const StepRange& range : ranges_) {
            end = std::min(end, range.first);
        }
        std::vector<std::vector<std::uint32_t>> steps;
        for (std::uint32_t step = 0; step < end; ++step) {
            const ControlWord control = controlWord(word(step));
            if (control.kind == ControlKind::keyFrame) {
                const std::span<const std::uint32_t> frame = keyFrame(control);
                steps.push_back({control.frameNumber, type(control)});
                steps.back().insert(steps.back().end(), frame.begin(), frame.end());
            } else {
                steps.push_back({word(step)});
            }
        }
        return steps;
    }

private:
    const VxbFile& file_;
    const Animation& animation_;
    std::vector<StepRange> ranges_;
    std::unordered_map<std::uint32_t, std::uint32_t> wordsAt_;  // by the place of a key frame
    std::vector<std::uint32_t> unused_;
};

/// Compares one motion of both files.
class MotionComparison {
public:
    MotionComparison(const Motions& before, const Motions& after, std::size_t motion,
                     Changes& changes)
        : before_(before),
          after_(after),
          motion_(motion),
          changes_(changes),
          place_(fmt::format("motion {}", motion)) {}

    void compare() {
        alignSteps();
        compareSteps();
        compareCoordinates();
    }

private:
    [[nodiscard]] bool sameStep(std::uint32_t one, std::uint32_t other) const {
        const ControlWord a = controlWord(before_.word(one));
        const ControlWord b = controlWord(after_.word(other));
        if (a.kind != b.kind) {
            return false;
        }
        switch (a.kind) {
        case ControlKind::keyFrame:
            return a.frameNumber == b.frameNumber && before_.type(a) == after_.type(b) &&
                   std::ranges::equal(before_.keyFrame(a), after_.keyFrame(b));
        case ControlKind::jump:  // where it leads is told when the steps are aligned
            return a.firstNumber == b.firstNumber && a.secondNumber == b.secondNumber;
        case ControlKind::end: return a.secondNumber == b.secondNumber;
        case ControlKind::unknown: break;
        }
        return before_.word(one) == after_.word(other);
    }

    /// The first and the last steps that are the same keep their partners; those in between have
    /// partners when both files have as many.
    void alignSteps() {
        const std::uint32_t numberBefore = before_.stepNum(motion_);
        const std::uint32_t numberAfter = after_.stepNum(motion_);
        const std::uint32_t common = std::min(numberBefore, numberAfter);
        const std::uint32_t firstBefore = before_.range(motion_).first;
        const std::uint32_t firstAfter = after_.range(motion_).first;
        if (numberBefore == numberAfter) {
            same_ = numberBefore;
            return;
        }
        while (same_ < common && sameStep(firstBefore + same_, firstAfter + same_)) {
            ++same_;
        }
        while (behind_ < common - same_ && sameStep(before_.range(motion_).end - 1 - behind_,
                                                    after_.range(motion_).end - 1 - behind_)) {
            ++behind_;
        }
        changes_.add(ChangeKind::motionSteps, place_,
                     fmt::format("steps: {} -> {}; {} at step {}", numberBefore, numberAfter,
                                 fmt::format("{} became {}", numberBefore - same_ - behind_,
                                             numberAfter - same_ - behind_),
                                 same_));
    }

    /// The step of the new file that is a step of the old one, both counted from their motion's
    /// first; nothing for one that is gone.
    [[nodiscard]] std::optional<std::int64_t> partner(std::int64_t step) const {
        const std::int64_t numberBefore = before_.stepNum(motion_);
        if (step < same_ || numberBefore == after_.stepNum(motion_)) {
            return step;
        }
        if (step >= numberBefore - behind_) {
            return step - numberBefore + after_.stepNum(motion_);
        }
        return std::nullopt;
    }

    [[nodiscard]] bool sameTarget(std::uint32_t one, std::uint32_t other) const {
        if (one == format::unresolvedSequence || other == format::unresolvedSequence) {
            return one == other;
        }
        const std::int64_t relative = std::int64_t{one} - before_.range(motion_).first;
        return partner(relative) == std::int64_t{other} - after_.range(motion_).first;
    }

    void compareSteps() {
        const std::uint32_t numberBefore = before_.stepNum(motion_);
        for (std::uint32_t step = 0; step < numberBefore; ++step) {
            if (const auto other = partner(step)) {
                compareStep(step, static_cast<std::uint32_t>(*other));
            }
        }
    }

    void compareStep(std::uint32_t one, std::uint32_t other) {
        const ControlWord a = controlWord(before_.word(before_.range(motion_).first + one));
        const ControlWord b = controlWord(after_.word(after_.range(motion_).first + other));
        const auto add = [&](ChangeKind kind, const std::string& text) {
            changes_.add(kind, fmt::format("{}, step {}", place_, one), text);
        };
        if (a.kind != b.kind) {
            add(ChangeKind::stepOther, fmt::format("{} -> {}", stepName(a), stepName(b)));
        } else if (a.kind == ControlKind::keyFrame) {
            if (a.frameNumber != b.frameNumber) {
                add(ChangeKind::stepFrames,
                    fmt::format("frames {} -> {}", a.frameNumber, b.frameNumber));
            }
            compareKeyFrame(a, b, add);
        } else {
            if (a.kind == ControlKind::jump && !sameTarget(a.target, b.target)) {
                add(ChangeKind::stepOther,
                    "goes to " + otherStep(targetName(before_, a), targetName(after_, b)));
            }
            if (!sameStep(before_.range(motion_).first + one,
                          after_.range(motion_).first + other)) {
                add(ChangeKind::stepOther, fmt::format("{} -> {}", stepName(a), stepName(b)));
            }
        }
    }

    template <class Add>
    void compareKeyFrame(const ControlWord& a, const ControlWord& b, Add add) {
        if (before_.type(a) != after_.type(b)) {
            add(ChangeKind::stepKeyFrame,
                fmt::format("type of key frame 0x{:x} -> 0x{:x}", before_.type(a), after_.type(b)));
        } else if (const auto one = before_.keyFrame(a), other = after_.keyFrame(b);
                   !std::ranges::equal(one, other)) {
            add(ChangeKind::stepKeyFrame,
                fmt::format("key frame ({}) -> ({})", valuesOf(one, before_.type(a)),
                            valuesOf(other, after_.type(b))));
        }
    }

    /// The numbers of a key frame in the order of its words.
    static std::string valuesOf(std::span<const std::uint32_t> words, PrimitiveTypeCode type) {
        const KeyFrameForm* form = findKeyFrameForm(type);
        std::string text;
        const auto put = [&](std::int32_t value) {
            text += fmt::format("{}{}", text.empty() ? "" : ", ", value);
        };
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (form != nullptr && i < form->wideValues) {
                put(static_cast<std::int32_t>(words[i]));
            } else {
                put(static_cast<std::int16_t>(words[i]));
                put(static_cast<std::int16_t>(words[i] >> 16U));
            }
        }
        return text;
    }

    static std::string stepName(const ControlWord& control) {
        switch (control.kind) {
        case ControlKind::keyFrame:
            return fmt::format("a key frame of {} frames", control.frameNumber);
        case ControlKind::jump:
            return fmt::format("a jump with {} and {}", control.firstNumber, control.secondNumber);
        case ControlKind::end: return fmt::format("an end with {}", control.secondNumber);
        case ControlKind::unknown: break;
        }
        return "a control word of no known kind";
    }

    [[nodiscard]] std::string targetName(const Motions& motions, const ControlWord& control) const {
        return stepNumber(motions, control.target);
    }

    /// A step that is no longer the same may have the same number.
    static std::string otherStep(const std::string& before, const std::string& after) {
        return before == after ? "another " + after : before + " -> " + after;
    }

    [[nodiscard]] std::string stepNumber(const Motions& motions, std::uint32_t step) const {
        return step == format::unresolvedSequence
                   ? "no step"
                   : fmt::format("step {}", std::int64_t{step} - motions.range(motion_).first);
    }

    void compareCoordinates() {
        std::map<std::uint32_t, std::vector<const AnimatedCoordinate*>> byNumber;
        for (const AnimatedCoordinate& animated : after_.coordinates(motion_)) {
            byNumber[animated.coordinate].push_back(&animated);
        }
        for (auto& [number, animated] : byNumber) {
            std::reverse(animated.begin(), animated.end());
        }
        for (const AnimatedCoordinate& animated : before_.coordinates(motion_)) {
            std::vector<const AnimatedCoordinate*>& others = byNumber[animated.coordinate];
            if (others.empty()) {
                changes_.add(
                    ChangeKind::motionCoordinates, place_,
                    fmt::format("coordinate {} is not animated any more", animated.coordinate));
            } else {
                compareCoordinate(animated, *others.back());
                others.pop_back();
            }
        }
        for (const auto& [number, added] : byNumber) {
            for (std::size_t i = 0; i < added.size(); ++i) {
                changes_.add(ChangeKind::motionCoordinates, place_,
                             fmt::format("coordinate {} is animated now", number));
            }
        }
    }

    void compareCoordinate(const AnimatedCoordinate& one, const AnimatedCoordinate& other) {
        const std::string place = fmt::format("{}, coordinate {}", place_, one.coordinate);
        if (!sameTarget(one.startStep, other.startStep)) {
            changes_.add(ChangeKind::motionStart, place,
                         "starts with " + otherStep(stepNumber(before_, one.startStep),
                                                    stepNumber(after_, other.startStep)));
        }
        const auto headersBefore = before_.headers(one);
        const auto headersAfter = after_.headers(other);
        if (headersBefore.size() != headersAfter.size()) {
            changes_.add(ChangeKind::motionHeaders, place,
                         fmt::format("sequence headers: {} -> {}", headersBefore.size(),
                                     headersAfter.size()));
            return;
        }
        for (std::size_t i = 0; i < headersBefore.size(); ++i) {
            constexpr std::uint32_t low = 0xFFFF;
            const std::uint32_t a = headersBefore[i];
            const std::uint32_t b = headersAfter[i];
            // The high half is a number or a second step.
            const bool sameHigh = a >> 16U == b >> 16U || sameTarget(a >> 16U, b >> 16U);
            if (!sameTarget(a & low, b & low) || !sameHigh) {
                changes_.add(ChangeKind::motionHeaders, place,
                             fmt::format("sequence header {}: {}, {} -> {}, {}", i,
                                         stepNumber(before_, a & low), a >> 16U,
                                         stepNumber(after_, b & low), b >> 16U));
            }
        }
    }

    const Motions& before_;
    const Motions& after_;
    std::size_t motion_;
    Changes& changes_;
    std::string place_;
    std::uint32_t same_ = 0;    ///< steps at the beginning that have partners
    std::uint32_t behind_ = 0;  ///< and at the end
};

}  // namespace

void compareMotions(const VxbFile& before, const VxbFile& after, Changes& changes) {
    const Motions motionsBefore(before);
    const Motions motionsAfter(after);
    const std::size_t common = std::min(motionsBefore.number(), motionsAfter.number());
    for (std::size_t motion = 0; motion < common; ++motion) {
        MotionComparison(motionsBefore, motionsAfter, motion, changes).compare();
    }
    const auto addWhole = [&](const Motions& motions, ChangeKind kind, const char* what) {
        for (std::size_t motion = common; motion < motions.number(); ++motion) {
            changes.add(
                kind, fmt::format("motion {}", motion),
                fmt::format("{}: {}, {}", what,
                            counted(motions.coordinates(motion).size(), "animated coordinate"),
                            counted(motions.stepNum(motion), "step")));
        }
    };
    addWhole(motionsBefore, ChangeKind::motionRemoved, "removed");
    addWhole(motionsAfter, ChangeKind::motionAdded, "added");

    const auto sortedTypes = [](const Motions& motions) {
        std::vector<PrimitiveTypeCode> types = motions.types();
        std::sort(types.begin(), types.end());
        return types;
    };
    if (sortedTypes(motionsBefore) != sortedTypes(motionsAfter)) {
        changes.add(ChangeKind::motionTypes, "motions",
                    fmt::format("types of key frames: {} -> {}", motionsBefore.types().size(),
                                motionsAfter.types().size()));
    }
    const auto unnamedBefore = motionsBefore.unnamed();
    const auto unnamedAfter = motionsAfter.unnamed();
    if (unnamedBefore != unnamedAfter) {
        changes.add(ChangeKind::words, "motions",
                    fmt::format("steps that no motion names: {} became {}", unnamedBefore.size(),
                                unnamedAfter.size()));
    }
    if (motionsBefore.unused() != motionsAfter.unused()) {
        changes.add(ChangeKind::words, "motions",
                    fmt::format("key frames that no step names: {} -> {} words",
                                motionsBefore.unused().size(), motionsAfter.unused().size()));
    }
}

}  // namespace vxbtool::diff
