#pragma once

#include <optional>
#include <span>
#include <string>
#include <tuple>

#include <sys/types.h>

namespace vxbtool {

/// Where a file stands: its folder, by device and number, and its name there. A folder that is
/// mounted twice has two paths. When there is no such folder: zeros and the whole path.
using FilePlace = std::tuple<dev_t, ino_t, std::string>;

/// The place that a name leads to, whether a file is there or not.
FilePlace placeOf(const std::string& name);

/// A file that was read and would be written, by the names that it has as both.
struct ReplacedInput {
    std::string input;
    std::string output;
};

/// The first output that would take the place of an input; nothing when none does. A hard link to an
/// input is no danger: outputs replace what has their name, and are not written into it.
std::optional<ReplacedInput> replacedInput(std::span<const std::string> inputs,
                                           std::span<const std::string> outputs);

}  // namespace vxbtool
