#include "vxbtool/import/motions.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <set>
#include <string_view>
#include <unordered_map>

#include <fmt/core.h>

#include "base/diagnostics.h"
#include "format/key_frame_forms.h"
#include "vxbtool/import/angles.h"
#include "vxbtool/import/channel.h"
#include "vxbtool/import/track.h"

namespace vxbtool::import {
namespace {

using mqf2vxb::PrimitiveTypeCode;

constexpr double framesPerSecond = 30;
constexpr double degrees = 180 / std::numbers::pi;
/// An hour, and the frames of all coordinates of all animations together.
constexpr double mostFrames = 60 * 60 * framesPerSecond;
constexpr double mostSamples = 20'000'000;
/// What 16 bits reach: words of key frames, steps.
constexpr std::size_t mostWords = 0x10000;
constexpr std::size_t mostSteps = 0xFFFF;
/// The offset of its record fills 16 bits.
constexpr std::uint32_t lastMovable = 3276;

/// One animation's channels that move a coordinate.
struct Moved {
    const MovableCoordinate* target = nullptr;
    Channel channel;
};

struct Animation {
    std::string name;
    std::vector<Moved> moved;
    double start = 0;  // in ticks
    double ticksPerFrame = 1;
    std::uint32_t length = 0;  // in frames

    [[nodiscard]] double tickOf(std::uint32_t frame) const { return start + frame * ticksPerFrame; }
};

class Losses {
public:
    explicit Losses(std::vector<LostMotion>& lost) : lost_(lost) {}
    void add(std::string what, std::string reason) {
        for (LostMotion& lost : lost_) {
            if (lost.what == what && lost.reason == reason) {
                ++lost.count;
                return;
            }
        }
        lost_.push_back({std::move(what), std::move(reason), 1});
    }

private:
    std::vector<LostMotion>& lost_;
};

std::string nameOf(const aiAnimation& animation, unsigned index) {
    return animation.mName.length > 0 ? animation.mName.C_Str()
                                      : fmt::format("animation {}", index + 1);
}

using NodeMap = std::unordered_map<std::string_view, const MovableCoordinate*>;

void takeChannels(const aiAnimation& source, const NodeMap& nodes, Animation& animation,
                  Losses& losses) {
    std::set<const MovableCoordinate*> taken;
    for (unsigned i = 0; i < source.mNumChannels; ++i) {
        const aiNodeAnim& channel = *source.mChannels[i];
        const auto found = nodes.find(channel.mNodeName.C_Str());
        if (found == nodes.end()) {
            losses.add("channel", "what it moves is not in the model");
        } else if (!taken.insert(found->second).second) {
            losses.add("channel", "another one moves the same node");
        } else if (found->second->coordinate > lastMovable) {
            losses.add("channel", "only the first 3277 coordinates can move");
        } else {
            animation.moved.push_back({found->second, Channel(channel, *found->second->node)});
        }
    }
}

/// The length and the beginning, in frames and ticks.
void measure(const aiAnimation& source, const std::string& file, Animation& animation) {
    constexpr double usualTicks = 25;
    const double ticks = source.mTicksPerSecond > 0 && std::isfinite(source.mTicksPerSecond)
                             ? source.mTicksPerSecond
                             : usualTicks;
    animation.ticksPerFrame = ticks / framesPerSecond;
    double end = std::isfinite(source.mDuration) ? std::max(source.mDuration, 0.0) : 0;
    for (const Moved& moved : animation.moved) {
        if (!moved.channel.times().empty()) {
            animation.start = std::min(animation.start, moved.channel.times().front());
            end = std::max(end, moved.channel.times().back());
        }
    }
    const double frames = std::round((end - animation.start) / animation.ticksPerFrame);
    if (frames > mostFrames) {
        mqf2vxb::notCorrectData(
            {file}, fmt::format("animation \"{}\" lasts {:.0f} frames, a motion can have {:.0f}; "
                                "--no-motions leaves motions out",
                                animation.name, frames, mostFrames));
    }
    animation.length = static_cast<std::uint32_t>(frames);
}

std::vector<Animation> readAnimations(const aiScene& source,
                                      std::span<const MovableCoordinate> movable,
                                      const MotionOptions& options, Losses& losses) {
    NodeMap nodes;
    for (const MovableCoordinate& coordinate : movable) {
        nodes.emplace(coordinate.node->mName.C_Str(), &coordinate);
    }
    std::vector<Animation> animations;
    double samples = 0;
    for (unsigned i = 0; i < source.mNumAnimations; ++i) {
        const aiAnimation& from = *source.mAnimations[i];
        for (unsigned k = 0; k < from.mNumMeshChannels + from.mNumMorphMeshChannels; ++k) {
            losses.add("channel", "it changes a mesh's shape");
        }
        Animation animation;
        animation.name = nameOf(from, i);
        takeChannels(from, nodes, animation, losses);
        measure(from, options.file, animation);
        samples += static_cast<double>(animation.moved.size()) * (animation.length + 2.0);
        animations.push_back(std::move(animation));
    }
    if (samples > mostSamples) {
        mqf2vxb::notCorrectData(
            {options.file},
            fmt::format("its animations have {:.0f} frames of moving coordinates, at "
                        "most {:.0f} can be taken; --no-motions leaves motions out",
                        samples, mostSamples));
    }
    return animations;
}

/// A matrix's part that turns and scales.
aiMatrix3x3t<double> turning(const aiMatrix4x4t<double>& matrix) {
    return aiMatrix3x3t<double>(matrix);
}

/// How far a coordinate is from where it rests, over all samples of a track.
class Departure {
public:
    explicit Departure(const model_text::Coordinate& rest)
        : rest_{Vector(rest.matrix[0], rest.matrix[3], rest.matrix[6]) / one,
                Vector(rest.matrix[1], rest.matrix[4], rest.matrix[7]) / one,
                Vector(rest.matrix[2], rest.matrix[5], rest.matrix[8]) / one},
          translation_(rest.translation[0], rest.translation[1], rest.translation[2]) {}

    void take(const aiMatrix4x4t<double>& m) {
        const Vector moved = Vector(m.a4, m.b4, m.c4) - translation_;
        units = std::max({units, std::abs(moved.x), std::abs(moved.y), std::abs(moved.z)});
        const std::array<Vector, 3> axes{
            {{m.a1, m.b1, m.c1}, {m.a2, m.b2, m.c2}, {m.a3, m.b3, m.c3}}};
        for (std::size_t i = 0; i < axes.size(); ++i) {
            const double length = std::max(rest_[i].Length(), 1 / one);
            radians = std::max(radians, (axes[i] - rest_[i]).Length() / length);
        }
    }

    [[nodiscard]] Turned rest() const {
        aiMatrix3x3t<double> m;
        m.a1 = rest_[0].x, m.b1 = rest_[0].y, m.c1 = rest_[0].z;
        m.a2 = rest_[1].x, m.b2 = rest_[1].y, m.c2 = rest_[1].z;
        m.a3 = rest_[2].x, m.b3 = rest_[2].y, m.c3 = rest_[2].z;
        return takeApart(m);
    }

    double units = 0;
    double radians = 0;  ///< of its axes, in parts of their length

private:
    static constexpr double one = 4096;
    std::array<Vector, 3> rest_;
    Vector translation_;
};

/// One coordinate in one animation, sampled.
struct SampledTrack {
    Track track;
    Parts parts;
    double leftOut = 0;   // how far what the parts leave out is from rest, in units
    double leftTurn = 0;  // and in radians
    double lean = 0;      // of the source's axes
};

class Sampler {
public:
    Sampler(const Animation& animation, std::span<const model_text::Coordinate> rest,
            const MotionOptions& options, const Tolerance& tolerance)
        : animation_(animation), rest_(rest), options_(options), tolerance_(tolerance) {
        seamless_ = animation.length > 0 &&
                    std::all_of(animation.moved.begin(), animation.moved.end(),
                                [&](const Moved& moved) { return endsAsItBegins(moved); });
        frames_ = animation.length + (seamless_ ? 0 : 1);
    }

    [[nodiscard]] std::uint32_t frames() const { return frames_; }

    [[nodiscard]] SampledTrack sample(const Moved& moved) const {
        SampledTrack sampled;
        const model_text::Coordinate& rest = rest_[moved.target->coordinate];
        Departure departure(rest);
        const Turned resting = departure.rest();
        Parts differs;
        Angles near{};
        for (std::uint32_t frame = 0; frame <= frames_; ++frame) {
            // The round that ends where it does not begin takes one more frame to get back.
            const std::uint32_t shown = frame > animation_.length ? 0 : frame;
            Sample sample = sampleAt(moved, animation_.tickOf(shown), near, sampled.lean);
            near = sample.angles;
            departure.take(matrixAt(moved, animation_.tickOf(shown)));
            const Vector scaled = sample.scale - resting.scale;
            differs.rotation = differs.rotation ||
                               angleBetween(sample.rotation, resting.rotation) > tolerance_.radians;
            differs.scale = differs.scale || scaled.Length() > tolerance_.scale;
            sampled.track.samples.push_back(sample);
        }
        closeRound(sampled.track);
        sampled.parts.translation = departure.units > tolerance_.units;
        if (departure.radians > tolerance_.radians) {
            // A player need not take a matrix apart: only one of an angle or of a scale alone keeps that
            // when the other is given.
            sampled.parts.rotation =
                differs.rotation || angleBetween(resting.rotation, {}) > slight;
            sampled.parts.scale =
                differs.scale || (resting.scale - Vector(1, 1, 1)).Length() > slight;
        } else {
            sampled.leftTurn = departure.radians;
        }
        sampled.leftOut = sampled.parts.translation ? 0 : departure.units;
        takeWantedFrames(moved, sampled.track);
        return sampled;
    }

private:
    /// More than a matrix's rounding.
    static constexpr double slight = 1.0 / 1024;

    [[nodiscard]] static aiMatrix4x4t<double> matrixOf(const Moved& moved, const NodePose& pose) {
        const aiMatrix4x4t<double> node(pose.scale, pose.rotation, pose.translation);
        return moved.target->before * node * moved.target->after;
    }
    [[nodiscard]] static aiMatrix4x4t<double> matrixAt(const Moved& moved, double tick) {
        return matrixOf(moved, moved.channel.at(tick));
    }

    static Sample sampleAt(const Moved& moved, double tick, const Angles& near, double& lean) {
        const NodePose pose = moved.channel.at(tick);
        // Taken apart without the node's scale, which may be none.
        const Turned turned = takeApart(turning(moved.target->before) *
                                        aiMatrix3x3t<double>(pose.rotation.GetMatrix()));
        const Vector after = takeApart(turning(moved.target->after)).scale;
        const aiMatrix4x4t<double> whole = matrixOf(moved, pose);
        Sample sample;
        sample.translation = {whole.a4, whole.b4, whole.c4};
        sample.rotation = turned.rotation;
        sample.angles = anglesNear(turned.rotation, near);
        sample.scale = turned.scale.SymMul(pose.scale).SymMul(after);
        lean = std::max(lean, turned.lean);
        return sample;
    }

    [[nodiscard]] bool endsAsItBegins(const Moved& moved) const {
        double lean = 0;
        const Sample first = sampleAt(moved, animation_.tickOf(0), {}, lean);
        const Sample last = sampleAt(moved, animation_.tickOf(animation_.length), {}, lean);
        const Vector apart = last.translation - first.translation;
        return std::max({std::abs(apart.x), std::abs(apart.y), std::abs(apart.z)}) <=
                   tolerance_.units &&
               angleBetween(first.rotation, last.rotation) <= tolerance_.radians &&
               (last.scale - first.scale).Length() <= tolerance_.scale;
    }

    void takeWantedFrames(const Moved& moved, Track& track) const {
        const auto want = [&](double frame) {
            if (frame > 0 && frame < frames_) {
                track.wanted.push_back(static_cast<std::uint32_t>(frame));
            }
        };
        if (options_.fps) {
            track.refine = false;
            for (double i = 1; i * framesPerSecond / *options_.fps < frames_; ++i) {
                want(std::round(i * framesPerSecond / *options_.fps));
            }
        } else {
            for (const double tick : moved.channel.times()) {
                const double frame = (tick - animation_.start) / animation_.ticksPerFrame;
                constexpr double whole = 1e-3;  // nearer than this to a frame is at it
                want(std::floor(frame + whole));
                want(std::ceil(frame - whole));
            }
        }
        if (!seamless_) {
            want(animation_.length);
        }
        std::sort(track.wanted.begin(), track.wanted.end());
        track.wanted.erase(std::unique(track.wanted.begin(), track.wanted.end()),
                           track.wanted.end());
    }

    const Animation& animation_;
    std::span<const model_text::Coordinate> rest_;
    const MotionOptions& options_;
    Tolerance tolerance_;
    bool seamless_ = false;
    std::uint32_t frames_ = 0;
};

/// Writes tracks as the steps and key frames of one motion.
class MotionBuilder {
public:
    void add(const Moved& moved, const SampledTrack& sampled, const Tolerance& tolerance) {
        const PrimitiveTypeCode type = smallestType(sampled.track, sampled.parts, tolerance);
        const Steps steps = chooseSteps(sampled.track, type, tolerance);
        const std::string node = moved.target->node->mName.C_Str();
        const std::string label = labelOf(node);
        motion.coordinateNotes.push_back({motion.coordinates.size(), node});
        motion.coordinates.push_back({moved.target->coordinate, label, {{false, label, {}, 0}}});
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
        raise(summary.positionError, std::max(steps.error.units, sampled.leftOut));
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
        for (int i = 2; !labels_.insert(label).second; ++i) {
            label = fmt::format("{}_{}", base, i);
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
    std::map<PrimitiveTypeCode, std::map<KeyValues, std::uint32_t>> known_;
};

struct Attempt {
    Motions made;
    std::size_t words = 0;
    std::size_t steps = 0;

    [[nodiscard]] bool fits() const { return words <= mostWords && steps <= mostSteps; }
};

Attempt attempt(const std::vector<Animation>& animations,
                std::span<const model_text::Coordinate> rest, const MotionOptions& options,
                double factor) {
    Tolerance tolerance;
    tolerance.units *= factor;
    tolerance.radians *= factor;
    tolerance.scale *= factor;
    Attempt result;
    result.made.tolerance = factor;
    Losses losses(result.made.lost);
    for (const Animation& animation : animations) {
        const Sampler sampler(animation, rest, options, tolerance);
        MotionBuilder builder;
        builder.summary.name = animation.name;
        builder.summary.frames = sampler.frames();
        for (const Moved& moved : animation.moved) {
            const SampledTrack sampled = sampler.sample(moved);
            if (sampled.parts.translation || sampled.parts.rotation || sampled.parts.scale) {
                builder.add(moved, sampled, tolerance);
            }
        }
        if (builder.motion.coordinates.empty()) {
            losses.add("animation", "nothing moves in it");
            continue;
        }
        builder.motion.comment =
            fmt::format("{}: {} frames a round, at 30 a second", animation.name, sampler.frames());
        result.words += builder.words();
        result.steps += builder.motion.steps.size();
        result.made.motions.push_back(std::move(builder.motion));
        result.made.summaries.push_back(std::move(builder.summary));
    }
    return result;
}

}  // namespace

Motions makeMotions(const aiScene& source, std::span<const MovableCoordinate> movable,
                    std::span<const model_text::Coordinate> rest, const MotionOptions& options) {
    std::vector<LostMotion> lost;
    Losses losses(lost);
    const std::vector<Animation> animations = readAnimations(source, movable, options, losses);
    constexpr double largestFactor = 256;
    double factor = 1;
    Attempt result = attempt(animations, rest, options, factor);
    while (!result.fits() && factor < largestFactor) {
        factor *= 2;
        result = attempt(animations, rest, options, factor);
    }
    if (!result.fits()) {
        mqf2vxb::notCorrectData(
            {options.file},
            fmt::format("its motions take {} words of key frames and {} steps, a model can have {} "
                        "and {}; --no-motions leaves motions out, --fps takes fewer steps",
                        result.words, result.steps, mostWords, mostSteps));
    }
    result.made.lost.insert(result.made.lost.begin(), lost.begin(), lost.end());
    return std::move(result.made);
}

}  // namespace vxbtool::import
