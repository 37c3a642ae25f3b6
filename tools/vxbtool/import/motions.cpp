#include "vxbtool/import/motions.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <set>
#include <string_view>
#include <utility>

#include <fmt/core.h>

#include "format/key_frame_forms.h"
#include "vxbtool/import/sampler.h"
#include "vxbtool/import/source.h"
#include "vxbtool/import/track.h"

namespace vxbtool::importing {
namespace {

using mqf2vxb::PrimitiveTypeCode;

constexpr double degrees = 180 / std::numbers::pi;
// What 16 bits reach.
constexpr std::size_t mostWords = 0x10000;  // of key frames
constexpr std::size_t mostSteps = 0xFFFF;

/// Writes tracks as the steps and key frames of one motion.
class MotionBuilder {
public:
    void add(const MovedCoordinate& moved, const SampledTrack& sampled,
             const Tolerance& tolerance) {
        const PrimitiveTypeCode type = smallestType(sampled.track, sampled.parts, tolerance);
        const Steps steps = chooseSteps(sampled.track, type, tolerance);
        const std::string node = moved.node;
        const std::string label = labelOf(node);
        motion.coordinateNotes.push_back({motion.coordinates.size(), node});
        motion.coordinates.push_back({moved.coordinate, label, {{false, label, {}, 0}}});
        for (std::size_t i = 0; i < steps.frames.size(); ++i) {
            const std::uint32_t frame = steps.frames[i];
            const std::uint32_t next =
                i + 1 < steps.frames.size() ? steps.frames[i + 1] : sampled.track.frames();
            model_text::Step step;
            step.kind = model_text::StepKind::keyFrame;
            step.label = i == 0 ? label : std::string();
            step.number = next - frame;
            step.type = type;
            step.keyFrame = keyFrame(type, keyValues(sampled.track.samples[frame], type));
            motion.steps.push_back(std::move(step));
        }
        model_text::Step back;
        back.kind = model_text::StepKind::jump;
        back.target = label;
        motion.steps.push_back(std::move(back));
        ++summary.coordinates;
        summary.steps += steps.frames.size();
        const auto raise = [](double& largest, double value) {
            largest = std::max(largest, value);
        };
        raise(summary.positionError, std::max(steps.error.units, sampled.leftUnits));
        raise(summary.angleError,
              (std::max(steps.error.radians, sampled.leftTurn) + sampled.lean) * degrees);
        raise(summary.scaleError, steps.error.scale);
    }

    [[nodiscard]] std::size_t words() const {
        std::size_t words = 0;
        for (const model_text::KeyFrameGroup& group : motion.groups) {
            const mqf2vxb::KeyFrameForm& form = *mqf2vxb::findKeyFrameForm(group.type);
            words += group.values.size() / form.values() * form.words();
        }
        return words;
    }

    model_text::Motion motion;
    MotionSummary summary;

private:
    /// A word for the node, that no other node of the motion has and that begins no line of another kind.
    std::string labelOf(const std::string& node) {
        std::string label = "at_";
        constexpr std::size_t longest = 60;
        for (const char c : std::string_view(node).substr(0, longest)) {
            const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') ||
                               (c >= 'a' && c <= 'z') || c == '-' || c == '.';
            label += plain ? c : '_';
        }
        const std::string base = label;
        for (int& next = nextLabel_.try_emplace(base, 2).first->second;
             !labels_.insert(label).second; ++next) {
            label = fmt::format("{}_{}", base, next);
        }
        return label;
    }

    /// The number of a key frame of these values, the same for the same values.
    std::uint32_t keyFrame(PrimitiveTypeCode type, KeyValues values) {
        auto group = std::find_if(motion.groups.begin(), motion.groups.end(),
                                  [&](const auto& g) { return g.type == type; });
        if (group == motion.groups.end()) {
            group = motion.groups.insert(group, {type, {}, {}});
        }
        const auto next = static_cast<std::uint32_t>(group->values.size() / values.size());
        const auto [known, isNew] = known_[type].try_emplace(std::move(values), next);
        if (isNew) {
            group->values.insert(group->values.end(), known->first.begin(), known->first.end());
            ++summary.keyFrames;
        }
        return known->second;
    }

    std::set<std::string> labels_;
    std::map<std::string, int> nextLabel_;  // the number to try next behind a label that is taken
    std::map<PrimitiveTypeCode, std::map<KeyValues, std::uint32_t>> known_;
};

struct Attempt {
    Motions made;
    std::size_t words = 0;
    std::size_t steps = 0;

    [[nodiscard]] bool fits() const { return words <= mostWords && steps <= mostSteps; }
    [[nodiscard]] bool fitsWith(const MotionBuilder& builder) const {
        return words + builder.words() <= mostWords &&
               steps + builder.motion.steps.size() <= mostSteps;
    }
};

/// Whether 16 bits do not hold the scale.
bool isTooLarge(const Sample& sample) {
    constexpr double most = 8;
    return std::max({std::abs(sample.scale.x), std::abs(sample.scale.y),
                     std::abs(sample.scale.z)}) > most;
}

/// Makes the motions with `factor` times the tolerance. Unless `whole`, it ends early when they do
/// not fit.
Attempt attempt(const std::vector<Animation>& animations, const PlacedCoordinates& placed,
                std::optional<double> fps, double factor, bool whole) {
    Tolerance tolerance;
    tolerance.units *= factor;
    tolerance.radians *= factor;
    tolerance.scale *= factor;
    Attempt result;
    result.made.tolerance = factor;
    for (const Animation& animation : animations) {
        const Sampler sampler(animation, fps, tolerance);
        MotionBuilder builder;
        builder.summary.name = animation.name;
        builder.summary.frames = sampler.frames();
        for (const MovedCoordinate& moved : animation.moved) {
            if (!whole && !result.fitsWith(builder)) {
                break;
            }
            const SampledTrack sampled =
                sampler.sample(moved, placed.coordinates[moved.coordinate]);
            if (sampled.parts.translation || sampled.parts.rotation || sampled.parts.scale) {
                builder.add(moved, sampled, tolerance);
                if (sampled.parts.scale && std::ranges::any_of(sampled.track.samples, isTooLarge)) {
                    countLost("coordinates", "a motion scales them beyond 8 times",
                              result.made.lost);
                }
            }
        }
        if (builder.motion.coordinates.empty()) {
            countLost("animation", "nothing moves in it", result.made.lost);
            continue;
        }
        builder.motion.comment = fmt::format("{}: {} frames a round, 30 of which make a second",
                                             animation.name, sampler.frames());
        result.words += builder.words();
        result.steps += builder.motion.steps.size();
        result.made.motions.push_back(std::move(builder.motion));
        result.made.summaries.push_back(std::move(builder.summary));
    }
    return result;
}

}  // namespace

Motions makeMotions(const aiScene& scene, const CoordinateMap& map, const PlacedCoordinates& placed,
                    double scale, std::optional<double> fps) {
    std::vector<LostMotion> lost;
    const std::vector<Animation> animations = readAnimations(scene, map, placed, scale, lost);
    constexpr double largestFactor = 256;
    double factor = 1;
    Attempt result = attempt(animations, placed, fps, factor, false);
    while (!result.fits() && factor < largestFactor) {
        factor *= 2;
        result = attempt(animations, placed, fps, factor, factor >= largestFactor);
    }
    if (!result.fits()) {
        throw ImportFault(fmt::format(
            "its motions take {} words of key frames and {} steps, a model can have {} and "
            "{}; --no-motions leaves motions out, --fps takes fewer steps",
            result.words, result.steps, mostWords, mostSteps));
    }
    result.made.lost.insert(result.made.lost.begin(), lost.begin(), lost.end());
    if (factor > 1) {
        result.made.lost.push_back({"times the tolerance of motions",
                                    "all key frames have to fit into 65536 words",
                                    static_cast<std::size_t>(factor)});
    }
    return std::move(result.made);
}

}  // namespace vxbtool::importing
