#pragma once

#include <stdexcept>
#include <string>

#include "vxb/vxb_file.h"

namespace CLI {
class App;
}  // namespace CLI

namespace vxbtool {

/// How a model is converted where a command takes one in place of a VXB file.
struct AnyModelOptions {
    std::string scale = "1";
    bool noImages = false;
    std::string base;
};

void addAnyModelOptions(CLI::App& command, AnyModelOptions& options);

/// A model or VXB file that cannot be had; what() has one line or more, without the last one's end.
class NoModel : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Whether a command takes the file for a model, which its ending tells.
bool isModelFile(const std::string& name);

/// Reads a VXB file, whatever it holds, or converts a model in memory. Throws NoModel, also when
/// `output`, where the command is going to write, is one of the model's files.
mqf2vxb::VxbFile readAnyModel(const std::string& name, const AnyModelOptions& options,
                              const std::string& output = {});

/// Throws NoModel when the file has errors.
void requireSound(const std::string& name, const mqf2vxb::VxbFile& file);

}  // namespace vxbtool
