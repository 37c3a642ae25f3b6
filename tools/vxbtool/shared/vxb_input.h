#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "vxb/vxb_file.h"

namespace vxbtool {

/// A file that cannot be read; what() is the cause.
class UnreadableFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The most bytes of a VXB file that are read: a device or a pipe may never end.
inline constexpr std::size_t largestVxbFile = std::size_t{1} << 30U;

/// Reads a VXB file, whatever it holds; "-" is standard input. Throws UnreadableFile.
mqf2vxb::VxbFile readVxbFile(const std::string& name);

/// Reads one for a command that shows what it holds. Standard error tells of a file that has errors,
/// and of one that cannot be read; that one is nothing.
std::optional<mqf2vxb::VxbFile> readForShow(const std::string& name);

}  // namespace vxbtool
