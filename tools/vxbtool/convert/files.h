#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vxbtool/convert/signals.h"
#include "vxbtool/shared/model_files.h"

namespace vxbtool {

/// The files of one model's conversion. Outputs are written under temporary names beside their
/// places, and take these with commit().
class ConvertFiles final : public ModelFiles {
public:
    ConvertFiles(std::string base, TemporaryFiles& temporaryFiles)
        : ModelFiles(std::move(base)), temporaryFiles_(temporaryFiles) {}
    ConvertFiles(const ConvertFiles&) = delete;
    ConvertFiles& operator=(const ConvertFiles&) = delete;
    /// Removes what was not committed.
    ~ConvertFiles() override;

    /// A device, a pipe and what is open already, such as "/dev/stdout", are written directly. A file that may not be written is not replaced.
    [[nodiscard]] std::unique_ptr<mqf2vxb::OutputFile> create(const std::string& name) override;
    /// Puts the outputs in their places, the one created last first; one that cannot be put there
    /// is reported.
    void commit();

private:
    struct Staged {
        std::string temporary;
        std::string target;
        std::string name;
    };

    mqf2vxb::DiskFileSystem disk_;
    TemporaryFiles& temporaryFiles_;
    std::vector<Staged> staged_;
};

}  // namespace vxbtool
