#pragma once

#include <span>
#include <string>

#include "model/options.h"

namespace mqf2vxb {

/// The lines that the program starts with, and those that tell how it is called.
std::string bannerText();
std::string usageText();

/// Scans the arguments from index 1 on and returns the index of the first that is not an option:
/// the MQF file name. Returns the argument count when there is none, also when an option lacks
/// its value. A name longer than 255 characters is refused.
std::size_t getOptions(std::span<const char* const> arguments, RunOptions& options);

/// Completes `outputName`: the name given with "-o", else the MQF file's, up to its first "." and
/// then ".vxb".
void makeOutputName(const std::string& mqfName, RunOptions& options);

}  // namespace mqf2vxb
