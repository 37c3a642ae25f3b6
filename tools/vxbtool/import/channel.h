#pragma once

#include <vector>

#include <assimp/anim.h>
#include <assimp/scene.h>

#include "vxbtool/import/coordinate_map.h"

namespace vxbtool::importing {

using Quaternion = aiQuaterniont<double>;

/// A node's own transform in three parts: scaled first, then turned, then moved.
struct NodePose {
    Vector translation;
    Quaternion rotation;
    Vector scale{1, 1, 1};
};

/// A node's keys in one animation. What it has no key of is the node's as it rests; keys that are no
/// numbers are left out, and keys out of order are put in order.
class Channel {
public:
    Channel(const aiNodeAnim& keys, const aiNode& node);

    /// The node at a moment, in ticks: between two keys values go evenly and turns the short way, before
    /// the first and behind the last they stay.
    [[nodiscard]] NodePose at(double tick) const;

    /// The moments of all keys, ascending, each once.
    [[nodiscard]] const std::vector<double>& times() const { return times_; }

private:
    std::vector<double> times_;  // filled while the keys are taken
    NodePose rest_;
    std::vector<aiVectorKey> positions_;
    std::vector<aiQuatKey> rotations_;
    std::vector<aiVectorKey> scales_;
};

}  // namespace vxbtool::importing
