#pragma once

#include <stdexcept>
#include <string>

#include "model/options.h"
#include "vxb/vxb_file.h"

namespace vxbtool {

/// Input that a command cannot work with; what() has one line or more, without the last one's end.
class UnusableInput : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Reads a VXB file, or a model, which is told by its ending .mqf and converted in memory: `options`
/// and `base`, from which its relative names are opened, are for models alone. Throws UnusableInput
/// for what cannot be read or converted.
mqf2vxb::VxbFile readFileOrModel(const std::string& name, const mqf2vxb::RunOptions& options,
                                 const std::string& base);

/// Throws UnusableInput when the file has errors.
void requireSound(const std::string& name, const mqf2vxb::VxbFile& file);

}  // namespace vxbtool
