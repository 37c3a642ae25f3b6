#include "vxbtool/scene/motions.h"

#include <algorithm>
#include <numbers>

#include <fmt/core.h>

#include "vxb/key_frame_decoder.h"
#include "vxbtool/scene/turn_pieces.h"

namespace vxbtool::scene {
namespace {

using namespace mqf2vxb;

/// What all tracks together may go through, in keys, jumps and pieces of turns: tracks may walk the same
/// steps, so that a small file can name very many.
std::size_t mostOfTracks(const Animation& animation) {
    constexpr std::size_t least = std::size_t{1} << 18U;
    constexpr std::size_t perStep = 32;
    return least + perStep * animation.controlNum;
}

constexpr float one = 4096;

class TrackReader {
public:
    explicit TrackReader(const VxbFile& file)
        : file_(file),
          animation_(file.animation),
          visits_(file.animation.controlNum),
          most_(mostOfTracks(file.animation)) {}

    /// The steps from `start` on.
    [[nodiscard]] Track read(std::uint32_t coordinate, std::uint32_t start) {
        Track track;
        track.coordinate = coordinate;
        ++number_;
        std::uint32_t step = start;
        std::vector<PrimitiveTypeCode> types;  // of the track's keys
        const auto add = [&](const Pose& pose, PrimitiveTypeCode type) {
            if (!types.empty()) {
                Key& before = track.keys.back();
                before.even = type == types.back();
                if (before.even && before.pose.angles && pose.angles) {
                    spent_ += turnPieces(*before.pose.angles, *pose.angles);
                }
            }
            track.keys.push_back({track.frames, pose, false});
            types.push_back(type);
            ++spent_;
        };
        while (step < visits_.size() && !full()) {
            Visit& visit = visits_[step];
            if (visit.track == number_) {
                // The round ends with what it began with.
                if (visit.key < types.size() && visit.frame < track.frames) {
                    track.loops = true;
                    track.loopFrom = visit.frame;
                    add(Pose(track.keys[visit.key].pose), types[visit.key]);
                }
                break;
            }
            visit = {number_, static_cast<std::uint32_t>(track.keys.size()), track.frames};
            const ControlWord control = controlWord(file_.words[animation_.controlOffset + step]);
            if (control.kind == ControlKind::jump) {
                step = control.target;
                ++spent_;
                continue;
            }
            if (control.kind != ControlKind::keyFrame) {
                break;
            }
            const PrimitiveTypeCode type = typeOf(control);
            add(poseOf(control, type), type);
            track.frames += control.frameNumber;
            ++step;
        }
        return track;
    }

    [[nodiscard]] bool full() const { return spent_ >= most_; }
    /// Steps whose key frame is not in the file.
    [[nodiscard]] std::size_t lost() const { return lost_; }

private:
    /// A step that a track has come to.
    struct Visit {
        std::uint32_t track = 0;  ///< counted from 1
        std::uint32_t key = 0;    ///< the track's next key then
        double frame = 0;
    };

    /// The type of a step's key frame; 0 when there is none.
    [[nodiscard]] PrimitiveTypeCode typeOf(const ControlWord& control) {
        const KeyFrameForm* form = keyFrameForm(animation_, control.typeIndex);
        if (form == nullptr) {
            const bool bare = control.typeIndex == 0 && animation_.types.empty();
            return bare ? type_code::animation : 0;
        }
        const std::vector<KeyFrame>& frames = animation_.keyFrames;
        const auto behind = std::upper_bound(
            frames.begin(), frames.end(), control.target,
            [](std::uint32_t place, const KeyFrame& frame) { return place < frame.offset; });
        const std::uint32_t end =
            behind != frames.end() ? behind->offset : animation_.keyFrameWords;
        const std::uint32_t room = end - std::min(control.target, end);
        if (!hasListedForm(control.typeIndex, *form, room)) {
            return type_code::animation;
        }
        return std::uint64_t{control.target} + form->words() <= animation_.keyFrameWords
                   ? form->type
                   : 0;
    }

    /// What a key frame sets, by the digits of its type. What the pair of the bare type means is
    /// not known: it sets nothing.
    [[nodiscard]] Pose poseOf(const ControlWord& control, PrimitiveTypeCode type) {
        Pose pose;
        const KeyFrameForm* form = findKeyFrameForm(type);
        if (form == nullptr) {
            ++lost_;
            return pose;
        }
        const std::uint32_t first = animation_.keyFrameOffset + control.target;
        std::uint32_t next = 0;
        const auto value = [&]() -> float {
            const std::uint32_t i = next++;
            const auto wide = static_cast<std::uint32_t>(form->wideValues);
            if (i < wide) {
                return static_cast<float>(static_cast<std::int32_t>(file_.words[first + i]));
            }
            const std::uint32_t word = file_.words[first + wide + (i - wide) / 2];
            return static_cast<std::int16_t>((i - wide) % 2 == 0 ? word : word >> 16U);
        };
        const auto three = [&](float unit) {
            Vector3 values{};
            for (float& component : values) {
                component = value() * unit;
            }
            return values;
        };
        const auto digit = [&](unsigned place) { return type >> 4 * place & 0xFU; };
        constexpr std::uint32_t single = 9;
        if (digit(0) != 0) {
            pose.translation = three(1);
        }
        if (digit(1) != 0) {
            pose.angles = three(2 * std::numbers::pi_v<float> / one);
        }
        if (digit(2) == single) {
            const float all = value() / one;
            pose.scale = {all, all, all};
        } else if (digit(2) != 0) {
            pose.scale = three(1 / one);
        }
        return pose;
    }

    const VxbFile& file_;
    const Animation& animation_;
    std::vector<Visit> visits_;  // by step
    std::uint32_t number_ = 0;
    std::size_t most_;
    std::size_t spent_ = 0;
    std::size_t lost_ = 0;
};

}  // namespace

std::vector<Motion> readMotions(const VxbFile& file, std::vector<std::string>& warnings) {
    std::vector<Motion> motions;
    TrackReader reader(file);
    std::vector<std::uint32_t> animatedBy(file.coordinates.size());  // 1 more than the motion
    std::size_t strange = 0;
    for (const mqf2vxb::Motion& named : file.animation.motions) {
        Motion& motion = motions.emplace_back();
        for (std::uint32_t i = 0; i < named.coordinateNum; ++i) {
            const AnimatedCoordinate& animated =
                file.animation.coordinates[named.firstCoordinate + i];
            if (animated.coordinate >= file.coordinates.size() ||
                animatedBy[animated.coordinate] == motions.size()) {
                ++strange;
                continue;
            }
            animatedBy[animated.coordinate] = static_cast<std::uint32_t>(motions.size());
            Track track = reader.read(animated.coordinate, animated.startStep);
            if (!track.keys.empty()) {
                motion.frames = std::max(motion.frames, track.frames);
                motion.tracks.push_back(std::move(track));
            }
        }
    }
    if (strange > 0) {
        warnings.push_back(fmt::format(
            "{} animated coordinate{} left out: it is not in the file, or its motion names it twice",
            strange, strange == 1 ? " is" : "s are"));
    }
    if (reader.lost() > 0) {
        warnings.push_back(fmt::format("{} step{} of motions lack{} a key frame", reader.lost(),
                                       reader.lost() == 1 ? "" : "s",
                                       reader.lost() == 1 ? "s" : ""));
    }
    if (reader.full()) {
        warnings.push_back(
            fmt::format("motions are cut off: for the {} steps of the file, their coordinates go "
                        "through too many steps and turns",
                        file.animation.controlNum));
    }
    return motions;
}

}  // namespace vxbtool::scene
