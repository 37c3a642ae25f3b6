#pragma once

#include <span>
#include <string_view>

namespace mqf2vxb::fuzz {

/// One part of the program that takes any bytes.
struct Target {
    std::string_view name;
    /// Throws std::logic_error when the program breaks one of its promises.
    void (*run)(std::string_view input);
};

std::span<const Target> targets();

}  // namespace mqf2vxb::fuzz
