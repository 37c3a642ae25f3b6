#pragma once

#include <span>
#include <string>

namespace vxbtool {

/// The text of a depfile, as Make and Ninja read it: `output` depends on every input. An empty rule
/// for each input lets Make go on when one is gone. A name that one of the two programs would read
/// as something else is reported.
std::string depfileText(const std::string& output, std::span<const std::string> inputs);

}  // namespace vxbtool
