#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

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

/// What was read, and the files that it was read from.
struct AnyModel {
    mqf2vxb::VxbFile file;
    std::vector<std::string> inputs;
};

/// Reads a VXB file, whatever it holds, or converts a model in memory. Throws NoModel.
AnyModel readAnyModel(const std::string& name, const AnyModelOptions& options);

/// Throws NoModel when one of the outputs would replace a file that the model was read from.
void requireOthers(std::span<const std::string> inputs, std::span<const std::string> outputs);

/// Throws NoModel when the file has errors.
void requireSound(const std::string& name, const mqf2vxb::VxbFile& file);

}  // namespace vxbtool
