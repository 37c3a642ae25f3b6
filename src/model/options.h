#pragma once

#include <string>

namespace mqf2vxb {

/// What the command line asks for.
struct RunOptions {
    float scale = 1.0F;       ///< factor on every vertex coordinate as it is written
    bool imageOutput = true;  ///< write the image section
    bool outputNameGiven = false;
    bool hexOutput = false;  ///< write every word as hex text too
    std::string outputName;  ///< of the VXB file; complete after makeOutputName
    std::string hexName;
};

}  // namespace mqf2vxb
