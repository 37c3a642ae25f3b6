#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <assimp/scene.h>

#include "vxbtool/import/animations.h"
#include "vxbtool/import/coordinate_map.h"
#include "vxbtool/import/nodes.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

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

struct Motions {
    std::vector<model_text::Motion> motions;
    std::vector<MotionSummary> summaries;  ///< of each motion
    std::vector<LostMotion> lost;
    /// The tolerances were this many times as large as they should be, for all key frames to be reached.
    double tolerance = 1;
};

/// Makes a motion of each animation that moves a coordinate. `scale` is the one that the coordinates were
/// placed with; with `fps`, from 1 to 30, steps stand as many times a second instead of where the
/// source's keys and the tolerance want them. Throws ImportFault of animations that are too long.
Motions makeMotions(const aiScene& scene, const CoordinateMap& map, const PlacedCoordinates& placed,
                    double scale, std::optional<double> fps);

}  // namespace vxbtool::importing
