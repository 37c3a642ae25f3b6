#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/file_contents.h"

namespace mqf2vxb {

/// The most bytes of an input file: a device or a pipe may never end.
inline constexpr std::size_t largestFile = std::size_t{1} << 31U;

/// How a file begins.
struct FileStart {
    FileContents contents;
    std::size_t fileSize = 0;  ///< all bytes of the file, of which `contents` may be the first
    /// The name leads to the same bytes again: the file is no pipe.
    bool canBeReadAgain = true;

    [[nodiscard]] bool isWhole() const { return contents.text().size() == fileSize; }
};

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
    /// The same for one who wants no more than the first `most` bytes: these, or all bytes where that
    /// is as easy. All of a file that cannot be read again.
    [[nodiscard]] virtual std::optional<FileStart> readStart(const std::string& name,
                                                             std::size_t most);
    /// The first `size` bytes of a file that had them when it was read before; nothing when it has
    /// them no longer.
    [[nodiscard]] virtual std::optional<FileContents> readAgain(const std::string& name,
                                                                std::size_t size);
    /// Creates or empties a file; null when that cannot be done.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> create(const std::string& name) = 0;
    [[nodiscard]] virtual bool exists(const std::string& name) const = 0;
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
    [[nodiscard]] std::optional<FileStart> readStart(const std::string& name,
                                                     std::size_t most) override;
    [[nodiscard]] std::optional<FileContents> readAgain(const std::string& name,
                                                        std::size_t size) override;
    [[nodiscard]] std::unique_ptr<OutputFile> create(const std::string& name) override;
    [[nodiscard]] bool exists(const std::string& name) const override;
    [[nodiscard]] bool same(const std::string& one, const std::string& other) const override;

private:
    FileContents room(std::size_t size);
    std::optional<FileContents> readAll(std::FILE& file, const std::string& name,
                                        std::optional<std::size_t> announced);

    std::shared_ptr<char[]> buffer_;  // of small files
};

}  // namespace mqf2vxb
