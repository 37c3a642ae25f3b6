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
    AnimationWriter(const scene::Scene& scene, const GltfOptions& options, Buffer& buffer)
        : scene_(scene), options_(options), buffer_(buffer) {}

    tinygltf::Animation write(const scene::Motion& motion) {
        tinygltf::Animation animation;
        for (const Track& track : motion.tracks) {
            const scene::Coordinate& rest = scene_.coordinates[track.coordinate];
            const auto unit = static_cast<float>(options_.unit);
            addPart(animation, track, &Pose::translation, "translation", rest.translation,
                    [&](const Vector3& v) {
                        return std::vector{v[0] * unit, v[1] * unit, v[2] * unit};
                    });
            addRotation(animation, track);
            addPart(animation, track, &Pose::scale, "scale",
                    scene::scaledRotation(rest.matrix).scale,
                    [](const Vector3& v) { return std::vector(v.begin(), v.end()); });
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

    /// The samples of a part; `between(from, to)` tells in how many pieces a way has to be cut.
    template <class Between>
    [[nodiscard]] Samples samplesOf(const Track& track, Part part, const Vector3& rest,
                                    Between between) const {
        Samples samples;
        const std::vector<Key>& keys = track.keys;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            samples.moves = samples.moves || (goes(track, i, part) &&
                                              *(keys[i].pose.*part) != *(keys[i + 1].pose.*part));
        }
        Vector3 held = rest;
        for (std::size_t i = 0; i < keys.size(); ++i) {
            const Vector3 value = (keys[i].pose.*part).value_or(held);
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

    template <class Numbers>
    void addPart(tinygltf::Animation& animation, const Track& track, Part part, const char* path,
                 const Vector3& rest, Numbers numbers) {
        if (!sets(track, part)) {
            return;
        }
        const Samples samples = samplesOf(
            track, part, rest, [](const Vector3&, const Vector3&) { return std::size_t{1}; });
        std::vector<float> values;
        for (const Vector3& value : samples.values) {
            const auto three = numbers(value);
            values.insert(values.end(), three.begin(), three.end());
        }
        addChannel(animation, track, path, samples, TINYGLTF_TYPE_VEC3, values);
    }

    void addRotation(tinygltf::Animation& animation, const Track& track) {
        if (!sets(track, &Pose::angles)) {
            return;
        }
        // Before its first angles a coordinate has its rotation at rest, for which no angles stand.
        const bool fromStart = track.keys.front().pose.angles.has_value();
        const Samples samples = samplesOf(track, &Pose::angles, noAngles, scene::turnPieces);
        const Quaternion rest =
            quaternion(scene::scaledRotation(scene_.coordinates[track.coordinate].matrix).rotation);
        std::vector<float> values;
        Quaternion last{0, 0, 0, 1};
        for (const Vector3& angles : samples.values) {
            Quaternion next =
                !fromStart && angles == noAngles ? rest : quaternion(scene::rotation(angles));
            const float agreement =
                last[0] * next[0] + last[1] * next[1] + last[2] * next[2] + last[3] * next[3];
            for (float& component : next) {
                component = agreement < 0 ? -component : component;  // the same, by the short way
            }
            values.insert(values.end(), next.begin(), next.end());
            last = next;
        }
        addChannel(animation, track, "rotation", samples, TINYGLTF_TYPE_VEC4, values);
    }

    void addChannel(tinygltf::Animation& animation, const Track& track, const char* path,
                    const Samples& samples, int type, std::span<const float> values) {
        tinygltf::AnimationSampler sampler;
        sampler.input = buffer_.add<float>(View::keys, TINYGLTF_TYPE_SCALAR, samples.times, true);
        sampler.output = buffer_.add<float>(View::keys, type, values);
        sampler.interpolation = samples.moves ? "LINEAR" : "STEP";
        tinygltf::AnimationChannel channel;
        channel.sampler = static_cast<int>(animation.samplers.size());
        channel.target_node = static_cast<int>(track.coordinate);
        channel.target_path = path;
        animation.samplers.push_back(std::move(sampler));
        animation.channels.push_back(std::move(channel));
    }

    /// No key frame has such angles.
    static constexpr Vector3 noAngles{1e9F, 1e9F, 1e9F};

    const scene::Scene& scene_;
    const GltfOptions& options_;
    Buffer& buffer_;
};

}  // namespace

void addAnimations(const scene::Scene& scene, const GltfOptions& options, tinygltf::Model& model,
                   Buffer& buffer) {
    AnimationWriter writer(scene, options, buffer);
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
