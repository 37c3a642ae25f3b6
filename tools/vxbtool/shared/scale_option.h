#pragma once

#include <string>

namespace vxbtool {

/// The number of a "--scale" option, read as mqf2vxb reads it but with nothing behind it; anything
/// else is bad usage.
float parseScale(const std::string& text);

}  // namespace vxbtool
