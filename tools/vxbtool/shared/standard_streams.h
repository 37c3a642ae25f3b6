#pragma once

#include <string>

namespace vxbtool {

/// A name on the command line as it is opened: "-" is standard input, or standard output.
inline std::string inputPath(const std::string& name) { return name == "-" ? "/dev/stdin" : name; }
inline std::string outputPath(const std::string& name) {
    return name == "-" ? "/dev/stdout" : name;
}

}  // namespace vxbtool
