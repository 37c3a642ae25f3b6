#include "vxbtool/shared/file_kind.h"

#include <algorithm>
#include <array>

#include <fmt/core.h>

#include "format/format.h"

namespace vxbtool {

std::string fileKind(std::string_view bytes) {
    constexpr std::array<char, 4> vxb{static_cast<char>(mqf2vxb::format::fileId), 0, 0, 0};
    if (bytes.starts_with(std::string_view(vxb.data(), vxb.size()))) {
        return R"(this is a VXB file; use "vxbtool check", "info", "dump" or "diff")";
    }
    if (bytes.starts_with("@MQF")) {
        return R"(this is a model; use "vxbtool lint" or "convert")";
    }
    constexpr std::array<std::string_view, 7> components{"@GEO", "@SRF", "@FRM", "@SQX",
                                                         "@AXS", "@BND", "@CLP"};
    const std::string_view tag = bytes.substr(0, components.front().size());
    if (std::find(components.begin(), components.end(), tag) != components.end()) {
        return fmt::format("this is a component of a model, of kind {}; name the model (.mqf)",
                           tag.substr(1));
    }
    return {};
}

}  // namespace vxbtool
