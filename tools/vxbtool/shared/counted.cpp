#include "vxbtool/shared/counted.h"

#include <fmt/core.h>

namespace vxbtool {

std::string counted(std::size_t number, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", number, number == 1 ? one : many);
}

std::string counted(std::size_t number, std::string_view one) {
    return counted(number, one, std::string(one) + "s");
}

}  // namespace vxbtool
