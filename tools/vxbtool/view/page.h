#pragma once

#include <string>
#include <string_view>

#include "vxbtool/shared/json_output.h"

namespace vxbtool::view {

/// The page with a model in its places. No name or text of the data can end the element that holds
/// it.
std::string filledPage(std::string_view pageTemplate, const Json& data, std::string_view glb);

}  // namespace vxbtool::view
