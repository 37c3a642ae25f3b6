#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vxbtool {

/// "1 vertex", "2 vertices".
std::string counted(std::size_t number, std::string_view one, std::string_view many);

/// "1 error", "2 errors".
std::string counted(std::size_t number, std::string_view one);

}  // namespace vxbtool
