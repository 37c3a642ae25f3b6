#include "vxbtool/shared/motion_steps.h"

#include <algorithm>

namespace vxbtool {

std::vector<StepRange> stepsOfMotions(const mqf2vxb::Animation& animation) {
    std::vector<StepRange> ranges;
    for (const mqf2vxb::Motion& motion : animation.motions) {
        std::uint32_t first = animation.controlNum;
        for (std::uint32_t i = 0; i < motion.coordinateNum; ++i) {
            first = std::min(first, animation.coordinates[motion.firstCoordinate + i].startStep);
        }
        ranges.push_back({first, first});
    }
    std::uint32_t end = animation.controlNum;
    for (std::size_t m = ranges.size(); m-- > 0;) {
        ranges[m].end = std::max(end, ranges[m].first);
        end = std::min(end, ranges[m].first);
    }
    return ranges;
}

}  // namespace vxbtool
