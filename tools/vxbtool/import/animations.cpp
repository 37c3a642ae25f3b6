#include "vxbtool/import/animations.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include <fmt/core.h>

#include "vxbtool/import/source.h"

namespace vxbtool::importing {
namespace {

constexpr double mostFrames = 60 * 60 * framesPerSecond;
/// The frames of all coordinates of all animations together.
constexpr double mostSamples = 2'000'000;
/// The offset of its record fills 16 bits.
constexpr std::uint32_t lastMovable = 3276;

MovedCoordinate movedCoordinate(const aiNodeAnim& channel, std::uint32_t index,
                                const CoordinateMap& map, const PlacedCoordinates& placed,
                                double scale) {
    const SourceCoordinate& source = map.coordinates[index];
    Matrix4 above;
    if (source.parent == index) {
        Matrix4::Scaling({scale, scale, scale}, above);
    } else {
        above = placed.toCoordinate[source.parent];
    }
    MovedCoordinate moved{index, source.node->mName.C_Str(), Channel(channel, *source.node),
                          above * source.folded, placed.toCoordinate[index]};
    moved.after.Inverse();
    return moved;
}

/// The length and the beginning, in frames and ticks.
void measure(const aiAnimation& source, double usualTicks, Animation& animation) {
    const double ticks = source.mTicksPerSecond > 0 && std::isfinite(source.mTicksPerSecond)
                             ? source.mTicksPerSecond
                             : usualTicks;
    animation.ticksPerFrame = ticks / framesPerSecond;
    double end = std::isfinite(source.mDuration) ? std::max(source.mDuration, 0.0) : 0;
    for (const MovedCoordinate& moved : animation.moved) {
        if (!moved.channel.times().empty()) {
            animation.start = std::min(animation.start, moved.channel.times().front());
            end = std::max(end, moved.channel.times().back());
        }
    }
    const double frames = std::round((end - animation.start) / animation.ticksPerFrame);
    if (!(frames <= mostFrames)) {
        throw ImportFault(fmt::format("animation \"{}\" lasts {:.6g} frames, a motion can have {}; "
                                      "--no-motions leaves motions out",
                                      animation.name, frames, mostFrames));
    }
    animation.length = static_cast<std::uint32_t>(frames);
}

/// The ticks a second of files that do not say.
double usualTicksOf(const aiScene& scene) {
    constexpr double ofXFiles = 4800;
    constexpr double ofOthers = 25;
    return formatOf(scene).find("XFile") != std::string::npos ? ofXFiles : ofOthers;
}

}  // namespace

void countLost(std::string what, std::string reason, std::vector<LostMotion>& lost) {
    const auto known = std::find_if(lost.begin(), lost.end(), [&](const LostMotion& other) {
        return other.what == what && other.reason == reason;
    });
    if (known != lost.end()) {
        ++known->count;
    } else {
        lost.push_back({std::move(what), std::move(reason), 1});
    }
}

std::vector<Animation> readAnimations(const aiScene& scene, const CoordinateMap& map,
                                      const PlacedCoordinates& placed, double scale,
                                      std::vector<LostMotion>& lost) {
    std::vector<Animation> animations;
    double samples = 0;
    for (unsigned a = 0; a < scene.mNumAnimations; ++a) {
        const aiAnimation& source = *scene.mAnimations[a];
        Animation animation;
        animation.name =
            source.mName.length > 0 ? source.mName.C_Str() : fmt::format("animation {}", a + 1);
        for (unsigned c = 0; c < source.mNumMeshChannels + source.mNumMorphMeshChannels; ++c) {
            countLost("channel", "it changes a mesh's shape", lost);
        }
        std::set<std::uint32_t> taken;
        for (unsigned c = 0; c < source.mNumChannels; ++c) {
            const aiNodeAnim& channel = *source.mChannels[c];
            const std::optional<std::uint32_t> index = map.find(channel.mNodeName.C_Str());
            if (!index) {
                countLost("channel", "what it moves is not in the model", lost);
            } else if (!taken.insert(*index).second) {
                countLost("channel", "another one moves the same node", lost);
            } else if (*index > lastMovable) {
                countLost("channel", "only the first 3277 coordinates can move", lost);
            } else {
                animation.moved.push_back(movedCoordinate(channel, *index, map, placed, scale));
            }
        }
        measure(source, usualTicksOf(scene), animation);
        samples += static_cast<double>(animation.moved.size()) * (animation.length + 2.0);
        animations.push_back(std::move(animation));
    }
    if (samples > mostSamples) {
        throw ImportFault(fmt::format(
            "its animations show coordinates in {:.6g} frames together, at most {} can be "
            "taken; --no-motions leaves motions out",
            samples, mostSamples));
    }
    return animations;
}

}  // namespace vxbtool::importing
