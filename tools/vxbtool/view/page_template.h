#pragma once

#include <optional>
#include <string_view>

namespace vxbtool::view {

/// The page without a model, as `viewer/` builds it; nothing when the program was built without it.
std::optional<std::string_view> pageTemplate();

}  // namespace vxbtool::view
