#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "files/disk_files.h"
#include "vxbtool/shared/temporary_files.h"

namespace vxbtool {

/// The outputs of one model's conversion. They are written under temporary names beside their
/// places, and take these with commit().
class StagedOutputs final : public mqf2vxb::OutputFiles {
public:
    /// With `ExistingFiles::kept` no output takes the place of a file, not even of one that appears
    /// while the outputs are written: commit() reports it then.
    explicit StagedOutputs(TemporaryFiles& temporaryFiles,
                           ExistingFiles existing = ExistingFiles::replaced)
        : temporaryFiles_(temporaryFiles), existing_(existing) {}
    StagedOutputs(const StagedOutputs&) = delete;
    StagedOutputs& operator=(const StagedOutputs&) = delete;
    /// Removes what was not committed.
    ~StagedOutputs() override;

    /// A device, a pipe and what is open already, such as "/dev/stdout", are written directly. A file
    /// that may not be written is not replaced.
    [[nodiscard]] std::unique_ptr<mqf2vxb::OutputFile> create(const std::string& name) override;
    /// Creates an output that holds these bytes. A Report tells when that fails.
    void write(const std::string& name, std::string_view bytes);
    /// Puts the outputs in their places, the one created last first; one that cannot be put there
    /// is reported. With `ExistingFiles::kept` none is left in its place then.
    void commit();

private:
    struct Staged {
        TemporaryFile temporary;
        std::string target;  ///< its name in its folder
        std::string name;
    };

    mqf2vxb::DiskOutputFiles disk_;
    TemporaryFiles& temporaryFiles_;
    ExistingFiles existing_;
    std::vector<Staged> staged_;
};

/// Writes the only output of a command. A Report tells when that fails.
void writeOutput(const std::string& name, std::string_view bytes);

}  // namespace vxbtool
