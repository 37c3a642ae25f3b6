#pragma once

#include <span>
#include <string>

namespace vxbtool {

/// Looks whether the files of a command can be written, and makes their folders. Returns what stands in
/// the way of it, a line without its end: a file that is there, unless `force` lets regular ones be
/// replaced, or a folder that cannot be made. Empty when nothing does.
std::string prepareNewFiles(std::span<const std::string> paths, bool force);

}  // namespace vxbtool
