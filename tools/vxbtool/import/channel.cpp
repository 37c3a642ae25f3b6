#include "vxbtool/import/channel.h"

#include <algorithm>
#include <cmath>

namespace vxbtool::importing {
namespace {

bool isFinite(const aiVector3D& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFinite(const aiQuaternion& q) {
    return std::isfinite(q.w) && std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z);
}

Vector wide(const aiVector3D& v) { return {double{v.x}, double{v.y}, double{v.z}}; }

/// Of length 1; a quaternion without a direction turns nothing.
Quaternion wide(const aiQuaternion& q) {
    const double length = std::hypot(std::hypot(q.w, q.x), std::hypot(q.y, q.z));
    if (length < 1e-9) {
        return {};
    }
    return {q.w / length, q.x / length, q.y / length, q.z / length};
}

template <class Key>
std::vector<Key> soundKeys(const Key* keys, unsigned count, std::vector<double>& times) {
    std::vector<Key> sound;
    for (unsigned i = 0; keys != nullptr && i < count; ++i) {
        if (std::isfinite(keys[i].mTime) && isFinite(keys[i].mValue)) {
            sound.push_back(keys[i]);
            times.push_back(keys[i].mTime);
        }
    }
    std::stable_sort(sound.begin(), sound.end(),
                     [](const Key& a, const Key& b) { return a.mTime < b.mTime; });
    return sound;
}

Vector between(const Vector& a, const Vector& b, double part) { return a + (b - a) * part; }

Quaternion between(const Quaternion& a, const Quaternion& b, double part) {
    Quaternion q;
    Quaternion::Interpolate(q, a, b, part);
    return q.Normalize();
}

template <class Key, class Value>
Value valueAt(const std::vector<Key>& keys, double tick, const Value& rest) {
    if (keys.empty()) {
        return rest;
    }
    const auto next = std::upper_bound(keys.begin(), keys.end(), tick,
                                       [](double t, const Key& key) { return t < key.mTime; });
    if (next == keys.begin()) {
        return wide(next->mValue);
    }
    const auto last = next - 1;
    if (next == keys.end()) {
        return wide(last->mValue);
    }
    return between(wide(last->mValue), wide(next->mValue),
                   (tick - last->mTime) / (next->mTime - last->mTime));
}

}  // namespace

Channel::Channel(const aiNodeAnim& keys, const aiNode& node)
    : positions_(soundKeys(keys.mPositionKeys, keys.mNumPositionKeys, times_)),
      rotations_(soundKeys(keys.mRotationKeys, keys.mNumRotationKeys, times_)),
      scales_(soundKeys(keys.mScalingKeys, keys.mNumScalingKeys, times_)) {
    aiVector3D scale;
    aiQuaternion rotation;
    aiVector3D translation;
    node.mTransformation.Decompose(scale, rotation, translation);
    rest_ = {isFinite(translation) ? wide(translation) : Vector(),
             isFinite(rotation) ? wide(rotation) : Quaternion(),
             isFinite(scale) ? wide(scale) : Vector(1, 1, 1)};
    std::sort(times_.begin(), times_.end());
    times_.erase(std::unique(times_.begin(), times_.end()), times_.end());
}

NodePose Channel::at(double tick) const {
    return {valueAt(positions_, tick, rest_.translation), valueAt(rotations_, tick, rest_.rotation),
            valueAt(scales_, tick, rest_.scale)};
}

}  // namespace vxbtool::importing
