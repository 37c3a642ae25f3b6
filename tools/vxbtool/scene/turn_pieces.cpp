#include "vxbtool/scene/turn_pieces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vxbtool::scene {

std::size_t turnPieces(const Vector3& from, const Vector3& to) {
    constexpr double far = std::numbers::pi / 2;
    constexpr double near = std::numbers::pi / 16;
    double most = 0;
    int going = 0;
    for (std::size_t i = 0; i < from.size(); ++i) {
        most = std::max(most, std::abs(double{to[i]} - from[i]));
        going += to[i] != from[i] ? 1 : 0;
    }
    const auto number = static_cast<std::size_t>(std::ceil(most / (going > 1 ? near : far)));
    return std::max<std::size_t>(number, 1);
}

}  // namespace vxbtool::scene
