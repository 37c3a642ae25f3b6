#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <assimp/scene.h>

#include "vxbtool/import/channel.h"
#include "vxbtool/import/coordinate_map.h"
#include "vxbtool/import/nodes.h"

namespace vxbtool::importing {

/// Something of the animations that no motion shows.
struct LostMotion {
    std::string what;
    std::string reason;
    std::size_t count = 0;
};

/// Counts one more of the same.
void countLost(std::string what, std::string reason, std::vector<LostMotion>& lost);

/// A channel and the coordinate that it moves. The coordinate's transform, in units, is `before` times
/// the node's own times `after`.
struct MovedCoordinate {
    std::uint32_t coordinate = 0;
    std::string node;
    Channel channel;
    Matrix4 before;
    Matrix4 after;
};

/// One animation as coordinates see it.
struct Animation {
    std::string name;
    std::vector<MovedCoordinate> moved;
    double start = 0;  ///< in ticks of the source
    double ticksPerFrame = 1;
    std::uint32_t length = 0;  ///< in frames, 30 of which make a second

    [[nodiscard]] double tickOf(std::uint32_t frame) const { return start + frame * ticksPerFrame; }
};

inline constexpr double framesPerSecond = 30;

/// The scene's animations. Throws ImportFault of those that go on for longer than an hour.
std::vector<Animation> readAnimations(const aiScene& scene, const CoordinateMap& map,
                                      const PlacedCoordinates& placed, double scale,
                                      std::vector<LostMotion>& lost);

}  // namespace vxbtool::importing
