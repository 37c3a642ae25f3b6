#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/seeded_hash.h"
#include "format/fixed_point.h"
#include "format/key_frame_forms.h"
#include "text/scan.h"
#include "vxbtool/lint/fixed_width.h"
#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {
namespace {

using namespace mqf2vxb;

using Names = std::unordered_set<std::string_view, SeededHash>;

/// Walks the lines of one motion file beside the records that were read from them.
class MotionCheck {
public:
    MotionCheck(const LintedModel& linted, std::size_t motion, std::vector<bool>& keyFrameUsed,
                Findings& findings)
        : model_(linted.model),
          motion_(model_.motions[motion]),
          file_(*linted.source.motions[motion]),
          keyFrameUsed_(keyFrameUsed),
          findings_(findings) {}

    void check() {
        gatherNames();
        line_ = linesBeforeCoordinates;
        std::unordered_set<std::int32_t> animated;
        for (const AnimationIndexRecord& index : motion_.indexTable) {
            if (!animated.insert(index.coord).second) {
                findings_.add(kind::animatedAgain, word(0), fmt::arg("coordinate", index.coord));
            }
            checkCoordinate(index);
        }
        checkSequence();
        for (const AnimationPacketTypeRecord& group : motion_.packetTypeTable) {
            ++line_;
            checkKeyFrames(group);
        }
    }

private:
    static constexpr std::size_t linesBeforeCoordinates = 3;  // ID, target and count

    void gatherNames() {
        line_ = linesBeforeCoordinates;
        for (const AnimationIndexRecord& index : motion_.indexTable) {
            named_.insert(text(startWord));
            ++line_;
            for (std::size_t i = 0; i < index.seqHeaderTable.size(); ++i, ++line_) {
                named_.insert(text(1));
                named_.insert(secondName());
            }
        }
        std::string_view label;
        for (; text(0) != "TYPE"; ++line_) {
            if (!atStep()) {
                label = text(0);
                continue;
            }
            labels_.insert(std::exchange(label, {}));
            if (text(0) == "GOTO") {
                named_.insert(text(1));
            }
        }
    }

    void checkCoordinate(const AnimationIndexRecord& index) {
        if (static_cast<std::size_t>(index.coord) >= model_.coordinates.size()) {
            findings_.add(kind::coordinateOutside, word(0), fmt::arg("coordinate", index.coord),
                          fmt::arg("count", model_.coordinates.size()));
        }
        checkName(text(startWord), startWord);
        ++line_;
        for (std::size_t i = 0; i < index.seqHeaderTable.size(); ++i, ++line_) {
            checkName(text(1), 1);
            checkName(secondName(), 2);
        }
    }

    /// A name that is missing on its line is another finding.
    void checkName(std::string_view name, std::size_t position) {
        if (!name.empty() && !labels_.contains(name)) {
            findings_.add(kind::nameUnknown, word(position), fmt::arg("name", name));
        }
    }

    /// Every line up to the first TYPE line that is no step is a label.
    void checkSequence() {
        const TracedLine* label = nullptr;
        std::size_t step = 0;
        std::string_view lastStep;
        const TracedLine* lastLine = nullptr;
        for (; text(0) != "TYPE"; ++line_) {
            if (atStep()) {
                lastLine = &file_.lines[line_];
                lastStep = text(0);
                checkStep(motion_.seqTable[step++], label);
                label = nullptr;
            } else {
                checkLost(label);
                label = &file_.lines[line_];
            }
        }
        checkLost(label);
        if (lastStep == "SEQ") {
            findings_.add(kind::endsWithSeq, wordPlace(file_, *lastLine, 0));
        }
    }

    void checkLost(const TracedLine* label) {
        if (label != nullptr) {
            findings_.add(kind::labelLost, wordPlace(file_, *label, 0),
                          fmt::arg("label", firstWord(*label)));
        }
    }

    void checkStep(const AnimationSequenceRecord& step, const TracedLine* label) {
        if (label != nullptr && !named_.contains(firstWord(*label))) {
            findings_.add(kind::labelUnused, wordPlace(file_, *label, 0),
                          fmt::arg("label", firstWord(*label)));
        }
        if (text(0) == "GOTO") {
            checkName(text(1), 1);
        } else if (step.showsKeyFrame() && !hasGroup(step.type)) {
            constexpr std::size_t typeWord = 2;
            findings_.add(kind::keyFrameElsewhere, word(typeWord),
                          fmt::arg("keyFrame", static_cast<std::int32_t>(step.keyFrame)));
        }
    }

    [[nodiscard]] bool hasGroup(PrimitiveTypeCode type) {
        if (types_.empty()) {
            for (const AnimationPacketTypeRecord& group : motion_.packetTypeTable) {
                types_.insert(group.type);
            }
        }
        return types_.contains(type);
    }

    void checkKeyFrames(const AnimationPacketTypeRecord& group) {
        const KeyFrameForm* form = findKeyFrameForm(group.type);
        for (std::size_t i = 0; i < group.packetNum; ++i) {
            if (!keyFrameUsed_[group.firstPacketNo + i]) {
                findings_.add(kind::keyFrameUnused, word(0), fmt::arg("keyFrame", i));
            }
            for (std::size_t k = 0; k < form->values(); ++k) {
                checkValue(group.packetTable[i * form->values() + k], k, k < form->wideValues);
            }
            ++line_;
        }
    }

    void checkValue(double value, std::size_t position, bool wide) {
        if (wide ? fits<std::int32_t>(value) : fits<std::int16_t>(value)) {
            return;
        }
        const std::uint32_t written = truncated(value);
        const auto shown = wide ? static_cast<std::int32_t>(written)
                                : std::int32_t{static_cast<std::int16_t>(written & 0xFFFFU)};
        findings_.add(kind::keyFrameWraps, word(position), fmt::arg("value", value),
                      fmt::arg("bits", wide ? 32 : 16), fmt::arg("written", shown));
    }

    [[nodiscard]] SourcePlace word(std::size_t position) const {
        return wordPlace(file_, file_.lines[line_], position);
    }

    /// The same word's text.
    [[nodiscard]] std::string_view text(std::size_t position) const {
        std::string_view rest = file_.lines[line_].text;
        for (std::size_t i = 0; i < position; ++i) {
            mqf2vxb::scanWord(rest);
        }
        return mqf2vxb::scanWord(rest);
    }
    [[nodiscard]] bool atStep() const {
        const std::string_view keyword = text(0);
        return keyword == "SEQ" || keyword == "GOTO" || keyword == "END";
    }
    /// A KEY2 line names a second label.
    [[nodiscard]] std::string_view secondName() const {
        return text(0) == "KEY2" ? text(2) : std::string_view();
    }

    static std::string_view firstWord(const TracedLine& line) {
        std::string_view rest = line.text;
        return mqf2vxb::scanWord(rest);
    }

    static constexpr std::size_t startWord = 2;

    const Model& model_;
    const MotionRecord& motion_;
    const TracedFile& file_;
    const std::vector<bool>& keyFrameUsed_;
    Findings& findings_;
    std::size_t line_ = 0;  // of file_.lines
    Names named_;
    Names labels_;
    std::unordered_set<PrimitiveTypeCode> types_;
};

/// By their numbers over all motions, the key frames that steps show.
std::vector<bool> usedKeyFrames(const Table<MotionRecord>& motions) {
    std::size_t count = 0;
    for (const MotionRecord& motion : motions) {
        for (const AnimationPacketTypeRecord& group : motion.packetTypeTable) {
            count += group.packetNum;
        }
    }
    std::vector<bool> used(count);
    for (const MotionRecord& motion : motions) {
        for (const AnimationSequenceRecord& step : motion.seqTable) {
            if (step.showsKeyFrame() && step.keyFrame < count) {
                used[step.keyFrame] = true;
            }
        }
    }
    return used;
}

}  // namespace

void checkMotions(const LintedModel& linted, Findings& findings) {
    const Table<MotionRecord>& motions = linted.model.motions;
    std::vector<bool> used = usedKeyFrames(motions);
    for (std::size_t i = 0; i < motions.size(); ++i) {
        if (linted.source.motions[i] != nullptr) {
            MotionCheck(linted, i, used, findings).check();
        }
    }
}

}  // namespace vxbtool::lint
