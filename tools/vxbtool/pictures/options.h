#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "vxbtool/pictures/placing.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vxbtool::pictures {

/// Adds "--texture-size N" and "--image-memory X,Y,W,H"; returns the latter.
CLI::Option* addPlacingOptions(CLI::App& command, PlacingOptions& options);

/// Whole numbers from 0 to 65535 between commas, `count` of them; anything else is bad usage of the
/// option.
std::vector<std::uint32_t> parseNumbers(const std::string& option, const std::string& text,
                                        std::size_t count);

}  // namespace vxbtool::pictures
