#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "files/input_files.h"
#include "files/output_files.h"

namespace mqf2vxb {

// The files of the machine. Relative names are opened from the working directory.

class DiskInputFiles final : public InputFiles {
public:
    [[nodiscard]] std::optional<FileContents> read(const std::string& name) override;
    [[nodiscard]] std::optional<FileStart> readStart(const std::string& name,
                                                     std::size_t most) override;
    [[nodiscard]] std::optional<FileContents> readAgain(const std::string& name,
                                                        std::size_t size) override;

private:
    FileContents room(std::size_t size);
    std::optional<FileContents> readAll(std::FILE& file, const std::string& name,
                                        std::optional<std::size_t> announced);

    std::shared_ptr<char[]> buffer_;  // of small files
};

class DiskOutputFiles final : public OutputFiles {
public:
    [[nodiscard]] std::unique_ptr<OutputFile> create(const std::string& name) override;
    [[nodiscard]] bool exists(const std::string& name) const override;
    [[nodiscard]] bool same(const std::string& one, const std::string& other) const override;
};

/// Where the name leads once every symbolic link in it is followed, also one whose target does
/// not exist yet.
std::filesystem::path finalTarget(const std::string& name);

}  // namespace mqf2vxb
