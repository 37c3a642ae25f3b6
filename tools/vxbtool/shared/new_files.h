#pragma once

#include <span>
#include <string>

#include "vxbtool/shared/temporary_files.h"

namespace vxbtool {

/// What --force asks for.
inline ExistingFiles existingFiles(bool force) {
    return force ? ExistingFiles::replaced : ExistingFiles::kept;
}

/// Looks whether the files of a command can be written, and makes their folders. Returns what stands in
/// the way of it, a line without its end: a file that is there, unless `force` lets regular ones be
/// replaced, or a folder that cannot be made. Empty when nothing does.
std::string prepareNewFiles(std::span<const std::string> paths, bool force);

}  // namespace vxbtool
