#include "vxbtool/gltf/animations.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "vxbtool/gltf/materials.h"
#include "vxbtool/gltf/rotations.h"
#include "vxbtool/scene/turn_pieces.h"

namespace vxbtool::gltf {
namespace {

using scene::Key;
using scene::Pose;
using scene::Track;
using scene::Vector3;

/// What one part of a pose is at the times of a track, as a sampler has it.
struct Samples {
    std::vector<float> times;     ///< in seconds, ascending, no two alike
    std::vector<Vector3> values;  ///< in the units of the pose
    bool moves = false;           ///< values go evenly from one to the next; else they stay

    void put(float time, const Vector3& value) {
        if (!times.empty() && time <= times.back()) {
            values.back() = value;
            return;
        }
        times.push_back(time);
        values.push_back(value);
    }
    /// A value that stays until `time` and leaps to another then.
    void leap(float time, const Vector3& before, const Vector3& value) {
        const float justBefore = std::nextafter(time, 0.0F);
        if (moves && before != value && !times.empty() && justBefore > times.back()) {
            put(justBefore, before);
        }
        put(time, value);
    }
};

class AnimationWriter {
public:
    AnimationWriter(const scene::Scene& scene, const GltfOptions& options,
                    const std::vector<int>& holders, Buffer& buffer)
        : scene_(scene), options_(options), holders_(holders), buffer_(buffer) {}

    tinygltf::Animation write(const scene::Motion& motion) {
        tinygltf::Animation animation;
        for (const Track& track : motion.tracks) {
            const auto unit = static_cast<float>(options_.unit);
            if (sets(track, &Pose::translation)) {
                const Vector3& rest = scene_.coordinates[track.coordinate].translation;
                addVectors(animation, track, "translation",
                           samplesOf(track, &Pose::translation, {rest, rest}, inOnePiece), unit);
            }
            addMatrix(animation, track);
        }
        return animation;
    }

private:
    using Part = std::optional<Vector3> Pose::*;

    [[nodiscard]] float timeOf(double frame) const {
        return static_cast<float>(frame / options_.fps);
    }

    /// Where values go evenly from a key to the next one.
    static bool goes(const Track& track, std::size_t key, Part part) {
        const std::vector<Key>& keys = track.keys;
        return keys[key].even && key + 1 < keys.size() && keys[key].pose.*part &&
               keys[key + 1].pose.*part && keys[key].frame < keys[key + 1].frame;
    }

    /// What a part is while its track does not set it.
    struct Unset {
        Vector3 atRest;
        Vector3 replaced;  ///< once angles or a scale have replaced the matrix
    };

    /// The key from which on a track replaces the matrix of its coordinate.
    static std::size_t firstReplacing(const Track& track) {
        const auto key = std::ranges::find_if(
            track.keys, [](const Key& k) { return k.pose.angles || k.pose.scale; });
        return static_cast<std::size_t>(key - track.keys.begin());
    }

    static std::size_t inOnePiece(const Vector3& /*from*/, const Vector3& /*to*/) { return 1; }

    /// The samples of a part; `between(from, to)` tells in how many pieces a way has to be cut.
    template <class Between>
    [[nodiscard]] Samples samplesOf(const Track& track, Part part, const Unset& unset,
                                    Between between) const {
        Samples samples;
        const std::vector<Key>& keys = track.keys;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            samples.moves = samples.moves || (goes(track, i, part) &&
                                              *(keys[i].pose.*part) != *(keys[i + 1].pose.*part));
        }
        const std::size_t replacing = firstReplacing(track);
        std::optional<Vector3> set;
        Vector3 held{};
        for (std::size_t i = 0; i < keys.size(); ++i) {
            set = keys[i].pose.*part ? keys[i].pose.*part : set;
            const Vector3 value = set.value_or(i < replacing ? unset.atRest : unset.replaced);
            samples.leap(timeOf(keys[i].frame), held, value);
            held = value;
            if (!samples.moves || !goes(track, i, part)) {
                continue;
            }
            const Vector3 next = *(keys[i + 1].pose.*part);
            const std::size_t pieces = between(value, next);
            for (std::size_t piece = 1; piece < pieces; ++piece) {
                const double share = static_cast<double>(piece) / static_cast<double>(pieces);
                Vector3 reached{};
                for (std::size_t c = 0; c < reached.size(); ++c) {
                    reached[c] =
                        static_cast<float>(value[c] + (double{next[c]} - value[c]) * share);
                }
                samples.put(timeOf(keys[i].frame + (keys[i + 1].frame - keys[i].frame) * share),
                            reached);
            }
            held = next;
        }
        samples.leap(timeOf(track.frames), held, held);
        return samples;
    }

    static bool sets(const Track& track, Part part) {
        return std::any_of(track.keys.begin(), track.keys.end(),
                           [&](const Key& key) { return (key.pose.*part).has_value(); });
    }

    /// The channels of a node's rotation and scale, and of the rotation that completes a shear: that
    /// one stays until the matrix is replaced, by what needs both of the others and nothing more.
    void addMatrix(tinygltf::Animation& animation, const Track& track) {
        const scene::Matrix& matrix = scene_.coordinates[track.coordinate].matrix;
        const scene::ScaledRotation parts = scene::scaledRotation(matrix);
        const auto node = static_cast<int>(track.coordinate);
        const int holder = holders_[track.coordinate];
        const bool shears = holder != node;
        const bool turns = sets(track, &Pose::angles);
        const bool scales = sets(track, &Pose::scale);
        if (!turns && !scales) {
            return;
        }
        const TurnedScale sheared = turnedScale(matrix);
        const Quaternion replaced = quaternion(parts.rotation);
        if (turns || shears) {
            addRotations(
                animation, node,
                samplesOf(track, &Pose::angles, {matrixAngles, partAngles}, scene::turnPieces),
                {shears ? quaternion(sheared.last) : replaced, replaced});
        }
        if (scales || shears) {
            addVectors(animation, track, "scale",
                       samplesOf(track, &Pose::scale,
                                 {shears ? sheared.scale : parts.scale, parts.scale}, inOnePiece),
                       1);
        }
        if (shears) {
            Samples completing;
            const std::size_t replacing = firstReplacing(track);
            completing.put(timeOf(track.keys.front().frame),
                           replacing == 0 ? partAngles : matrixAngles);
            completing.put(timeOf(track.keys[replacing].frame), partAngles);
            addRotations(animation, holder, completing,
                         {quaternion(sheared.first), Quaternion{0, 0, 0, 1}});
        }
    }

    void addVectors(tinygltf::Animation& animation, const Track& track, const char* path,
                    const Samples& samples, float unit) {
        std::vector<float> values;
        for (const Vector3& value : samples.values) {
            for (const float component : value) {
                values.push_back(component * unit);
            }
        }
        addChannel(animation, static_cast<int>(track.coordinate), path, samples, TINYGLTF_TYPE_VEC3,
                   values);
    }

    /// What matrixAngles and partAngles stand for.
    struct UnsetRotation {
        Quaternion atRest;
        Quaternion replaced;
    };

    void addRotations(tinygltf::Animation& animation, int node, const Samples& samples,
                      const UnsetRotation& unset) {
        std::vector<float> values;
        Quaternion last{0, 0, 0, 1};
        for (const Vector3& angles : samples.values) {
            Quaternion next = angles == matrixAngles ? unset.atRest
                              : angles == partAngles ? unset.replaced
                                                     : quaternion(scene::rotation(angles));
            const float agreement =
                last[0] * next[0] + last[1] * next[1] + last[2] * next[2] + last[3] * next[3];
            for (float& component : next) {
                component = agreement < 0 ? -component : component;  // the same, by the short way
            }
            values.insert(values.end(), next.begin(), next.end());
            last = next;
        }
        addChannel(animation, node, "rotation", samples, TINYGLTF_TYPE_VEC4, values);
    }

    void addChannel(tinygltf::Animation& animation, int node, const char* path,
                    const Samples& samples, int type, std::span<const float> values) {
        tinygltf::AnimationSampler sampler;
        sampler.input = buffer_.add<float>(View::keys, TINYGLTF_TYPE_SCALAR, samples.times, true);
        sampler.output = buffer_.add<float>(View::keys, type, values);
        sampler.interpolation = samples.moves ? "LINEAR" : "STEP";
        tinygltf::AnimationChannel channel;
        channel.sampler = static_cast<int>(animation.samplers.size());
        channel.target_node = node;
        channel.target_path = path;
        animation.samplers.push_back(std::move(sampler));
        animation.channels.push_back(std::move(channel));
    }

    /// Angles that no key frame has: those of the matrix at rest, for which no angles stand, and those
    /// of the rotation that is left of it when only its scale is replaced.
    static constexpr Vector3 matrixAngles{1e9F, 1e9F, 1e9F};
    static constexpr Vector3 partAngles{2e9F, 2e9F, 2e9F};

    const scene::Scene& scene_;
    const GltfOptions& options_;
    const std::vector<int>& holders_;
    Buffer& buffer_;
};

}  // namespace

void addAnimations(const scene::Scene& scene, const GltfOptions& options,
                   const std::vector<int>& holders, tinygltf::Model& model, Buffer& buffer) {
    AnimationWriter writer(scene, options, holders, buffer);
    for (std::uint32_t i = 0; i < scene.motions.size(); ++i) {
        tinygltf::Animation animation = writer.write(scene.motions[i]);
        if (animation.channels.empty()) {
            continue;
        }
        animation.name = "motion " + std::to_string(i);
        animation.extras = tinygltf::Value(tinygltf::Value::Object{
            {"motion", extra(i)}, {"frames", tinygltf::Value(scene.motions[i].frames)}});
        model.animations.push_back(std::move(animation));
    }
}

}  // namespace vxbtool::gltf
