#pragma once

#include <string>

#include "files/input_files.h"
#include "model/options.h"

namespace vxbtool {

/// Converts a model and returns the bytes of its VXB file, which is written nowhere. Throws a Report
/// when that fails.
std::string convertInMemory(const std::string& mqfName, const mqf2vxb::RunOptions& options,
                            mqf2vxb::InputFiles& files);

}  // namespace vxbtool
