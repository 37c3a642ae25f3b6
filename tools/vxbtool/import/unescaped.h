#pragma once

#include <string>
#include <string_view>

namespace vxbtool::importing {

/// "%20" and the like as the characters that they stand for.
std::string unescaped(std::string_view text);

}  // namespace vxbtool::importing
