#pragma once

#include <string>
#include <string_view>

namespace vxbtool {

/// What a file is and which commands read it, told by its first bytes, for one that was given to the
/// wrong command: "this is a VXB file; use ...". Empty when the bytes do not tell.
std::string fileKind(std::string_view bytes);

}  // namespace vxbtool
