#include "vxbtool/unpack/motions.h"

#include <algorithm>

#include <fmt/core.h>

#include "format/format.h"
#include "vxbtool/unpack/key_frames.h"
#include "vxbtool/unpack/motion_steps.h"

namespace vxbtool::unpack {
namespace {

using mqf2vxb::ControlKind;
using mqf2vxb::ControlWord;
using mqf2vxb::VxbFile;

/// A label that stands before no step.
constexpr const char* noLabel = "none";

std::string labelOf(std::uint32_t step) { return fmt::format("step{}", step); }

/// One motion's steps, with the labels that are asked for.
class MotionSteps {
public:
    MotionSteps(std::uint32_t first, std::uint32_t end, model_text::Motion& motion)
        : first_(first), end_(end), motion_(motion) {
        motion_.steps.resize(end - first);
    }

    /// The label of a step, put before it; `noLabel` for a step of another motion.
    std::string label(std::uint32_t step) {
        if (step < first_ || step >= end_) {
            return noLabel;
        }
        std::string& label = motion_.steps[step - first_].label;
        label = labelOf(step);
        return label;
    }

    void take(std::uint32_t index, const ControlWord& control) {
        model_text::Step& step = motion_.steps[index - first_];
        switch (control.kind) {
        case ControlKind::keyFrame:
            step.kind = model_text::StepKind::keyFrame;
            step.number = control.frameNumber;
            break;
        case ControlKind::jump:
            step.kind = model_text::StepKind::jump;
            step.number = control.firstNumber;
            step.second = control.secondNumber;
            step.target = label(control.target);
            break;
        default:
            step.kind = model_text::StepKind::end;
            step.number = control.secondNumber;
            break;
        }
    }

private:
    std::uint32_t first_;
    std::uint32_t end_;
    model_text::Motion& motion_;
};

model_text::AnimatedCoordinate unpackCoordinate(const VxbFile& file,
                                                const mqf2vxb::AnimatedCoordinate& coordinate,
                                                MotionSteps& steps) {
    model_text::AnimatedCoordinate result;
    result.coordinate = coordinate.coordinate;
    result.start = coordinate.startStep == mqf2vxb::format::unresolvedSequence
                       ? noLabel
                       : steps.label(coordinate.startStep);
    for (std::uint32_t k = 0; k < coordinate.sequenceNum; ++k) {
        const std::uint32_t word =
            file.words[coordinate.offset + mqf2vxb::format::animationIndexSize + k];
        model_text::SequenceHeader header;
        header.label = steps.label(word & 0xFFFFU);
        header.number = word >> 16U;
        result.headers.push_back(std::move(header));
    }
    return result;
}

}  // namespace

std::vector<model_text::Motion> unpackMotions(const VxbFile& file) {
    const mqf2vxb::Animation& animation = file.animation;
    std::vector<model_text::Motion> motions(animation.motions.size());
    if (motions.empty()) {
        return motions;
    }
    const std::vector<std::uint32_t> cuts = cutSteps(file);
    for (std::size_t m = 0; m < motions.size(); ++m) {
        model_text::Motion& motion = motions[m];
        motion.comment = fmt::format("motion {}: steps are numbered over all motions", m);
        MotionSteps steps(cuts[m], cuts[m + 1], motion);
        for (std::uint32_t i = 0; i < animation.motions[m].coordinateNum; ++i) {
            motion.coordinates.push_back(unpackCoordinate(
                file, animation.coordinates[animation.motions[m].firstCoordinate + i], steps));
        }
        for (std::uint32_t s = cuts[m]; s < cuts[m + 1]; ++s) {
            steps.take(s, mqf2vxb::controlWord(file.words[animation.controlOffset + s]));
        }
    }
    unpackKeyFrames(file, cuts, motions);
    return motions;
}

}  // namespace vxbtool::unpack
