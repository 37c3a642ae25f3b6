#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "files/input_files.h"
#include "files/output_files.h"
#include "model/options.h"

namespace vxbtool {

/// Files that stand in memory only: what is written there can be read.
class MemoryFiles final : public mqf2vxb::InputFiles, public mqf2vxb::OutputFiles {
public:
    [[nodiscard]] std::optional<mqf2vxb::FileContents> read(const std::string& name) override;
    [[nodiscard]] std::unique_ptr<mqf2vxb::OutputFile> create(const std::string& name) override;

    std::map<std::string, std::string> files;
};

/// Converts a model and returns the bytes of its VXB file, which is written nowhere. Throws a Report
/// when that fails.
std::string convertInMemory(const std::string& mqfName, const mqf2vxb::RunOptions& options,
                            mqf2vxb::InputFiles& files);

}  // namespace vxbtool
