#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vxbtool {

std::string base64(std::string_view bytes);

/// The bytes that a text in base64 stands for; nothing when it is none. Padding may be missing.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace vxbtool
