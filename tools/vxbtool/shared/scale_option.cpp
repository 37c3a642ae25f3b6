#include "vxbtool/shared/scale_option.h"

#include <cmath>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "text/scan.h"

namespace vxbtool {

float parseScale(const std::string& text) {
    std::string_view rest = text;
    float scale = 0.0F;
    if (mqf2vxb::scanReal(rest, scale) != mqf2vxb::Scanned::number || !rest.empty() ||
        !std::isfinite(scale)) {
        throw CLI::ValidationError("--scale", fmt::format("\"{}\" is not a number", text));
    }
    return scale;
}

}  // namespace vxbtool
