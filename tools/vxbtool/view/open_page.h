#pragma once

#include <string>

namespace vxbtool::view {

/// Shows a file with the first program of $BROWSER that is there, else with xdg-open, and waits for it.
/// Returns what went wrong; empty when nothing did.
std::string openPage(const std::string& file);

}  // namespace vxbtool::view
