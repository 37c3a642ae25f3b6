#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/file_contents.h"

namespace mqf2vxb {

/// The most bytes of an input file: a device or a pipe may never end.
inline constexpr std::size_t largestFile = std::size_t{1} << 31U;

/// A file being written. Destroying it closes it.
class OutputFile {
public:
    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    virtual ~OutputFile() = default;

    /// False when the bytes could not be written.
    [[nodiscard]] virtual bool write(std::string_view bytes) = 0;
    /// Closes the file; false when something written before is lost.
    [[nodiscard]] virtual bool close() = 0;
};

/// How a conversion reaches files, so that it can also run on files in memory.
class FileSystem {
public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    /// All bytes of a file; nothing when it cannot be opened and read. One that does not fit
    /// `largestFile` is refused.
    [[nodiscard]] virtual std::optional<FileContents> read(const std::string& name) = 0;
    /// Creates or empties a file; null when that cannot be done.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> create(const std::string& name) = 0;
    /// Whether both names lead to one file, now or after one of them is created.
    [[nodiscard]] virtual bool same(const std::string& one, const std::string& other) const = 0;
};

/// Where the name leads once every symbolic link in it is followed, also one whose target does
/// not exist yet.
std::filesystem::path finalTarget(const std::string& name);

/// The files of the machine. Relative names are opened from the working directory.
class DiskFileSystem final : public FileSystem {
public:
    [[nodiscard]] std::optional<FileContents> read(const std::string& name) override;
    [[nodiscard]] std::unique_ptr<OutputFile> create(const std::string& name) override;
    [[nodiscard]] bool same(const std::string& one, const std::string& other) const override;

private:
    FileContents room(std::size_t size);

    std::shared_ptr<char[]> chunk_;  // what small files share
    std::size_t chunkSize_ = 0;
    std::size_t used_ = 0;
};

}  // namespace mqf2vxb
