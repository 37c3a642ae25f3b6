#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <assimp/matrix3x3.h>
#include <assimp/matrix4x4.h>
#include <assimp/scene.h>

#include "base/seeded_hash.h"

namespace vxbtool::importing {

using Matrix3 = aiMatrix3x3t<double>;
using Matrix4 = aiMatrix4x4t<double>;
using Vector = aiVector3t<double>;

/// What a coordinate of the model is made of. A point p of its node's space, in units of the source,
/// lies at `vertexTransform` p in the coordinate's space, before --scale makes units of it.
///
/// Where the node's own transformation is N at some time, `folded` N is that of the coordinate in
/// the source's space of its parent, and with A as `parentTransform` times the 3x3 part of that, the
/// coordinate's matrix is A times the inverse of `vertexTransform`, and its translation is
/// `parentTransform` times that part's, times --scale.
struct SourceCoordinate {
    const aiNode* node = nullptr;
    std::uint32_t parent = 0;  ///< itself for a root
    /// Of the nodes between the parent's and this one, from above; a root's begins with what turns the
    /// source upright.
    Matrix4 folded;
    Matrix4 local;            ///< folded times the node's transformation at rest
    Matrix3 parentTransform;  ///< the parent's vertexTransform; identity for a root
    /// What the coordinate's matrix cannot hold. One that moves has a multiple of the identity here.
    Matrix3 vertexTransform;
    bool draws = false;  ///< its node has polygons of its own
    bool moves = false;  ///< an animation has a channel for it
    bool joint = false;  ///< a mesh names it as a bone

    [[nodiscard]] Matrix3 parentPart() const { return parentTransform * Matrix3(local); }
};

/// The coordinates of a model, parents before their children.
struct CoordinateMap {
    std::vector<SourceCoordinate> coordinates;
    std::unordered_map<const aiNode*, std::uint32_t> byNode;
    /// Of a name the first, from the root.
    std::unordered_map<std::string, const aiNode*, mqf2vxb::SeededHash, std::equal_to<>> nodes;

    /// The coordinate that an animation's channel or a bone of this name moves.
    [[nodiscard]] std::optional<std::uint32_t> find(const std::string& name) const;
};

}  // namespace vxbtool::importing
