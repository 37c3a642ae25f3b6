#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <assimp/scene.h>

#include "vxbtool/model_text/model_text.h"

namespace vxbtool::import {

/// A coordinate that stands for a node. Its transform, in units, is `before` times the node's own times
/// `after`.
struct MovableCoordinate {
    const aiNode* node = nullptr;
    std::uint32_t coordinate = 0;
    aiMatrix4x4t<double> before;
    aiMatrix4x4t<double> after;
};

struct MotionOptions {
    std::string file;  ///< of the source, for reports
    std::optional<double>
        fps;  ///< steps a second, from 1 to 30, instead of those of the source's keys
};

/// What became of one animation.
struct MotionSummary {
    std::string name;
    std::uint32_t frames = 0;  ///< of one round, at 30 a second
    std::size_t coordinates = 0;
    std::size_t steps = 0;
    std::size_t keyFrames = 0;
    // The largest differences from the source at any frame, each in its parent's space.
    double positionError = 0;  ///< in units along an axis
    double angleError = 0;     ///< in degrees
    double scaleError = 0;
};

/// Something of the animations that no motion shows.
struct LostMotion {
    std::string what;
    std::string reason;
    std::size_t count = 0;
};

struct Motions {
    std::vector<model_text::Motion> motions;
    std::vector<MotionSummary> summaries;  ///< of each motion
    std::vector<LostMotion> lost;
    /// The tolerances were this many times as large as they should be, for all key frames to be reached.
    double tolerance = 1;
};

/// Makes a motion of each animation that moves a coordinate. `rest` are all coordinates, of which
/// `movable` may name those with nodes in any number. Throws mqf2vxb::Report of animations that are too
/// long to be motions.
Motions makeMotions(const aiScene& source, std::span<const MovableCoordinate> movable,
                    std::span<const model_text::Coordinate> rest, const MotionOptions& options);

}  // namespace vxbtool::import
