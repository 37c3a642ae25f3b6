#pragma once

#include <cstdint>

namespace vxbtool::model_text {

/// The float with the fewest decimals that, times 4096 and truncated, is `fixed` again: 0.7071 for
/// 2896.
float shortestFixed(std::int16_t fixed);

}  // namespace vxbtool::model_text
