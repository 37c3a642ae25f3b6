#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include "base/file_contents.h"

namespace mqf2vxb {

/// The most bytes of an input file; a pipe may never end.
inline constexpr std::size_t largestFile = std::size_t{1} << 31U;

/// How a file begins.
struct FileStart {
    FileContents contents;
    std::size_t fileSize = 0;  ///< all bytes of the file, of which `contents` may be the first
    /// Opened again, the name gives the same bytes, as that of a pipe does not.
    bool canBeReadAgain = true;

    [[nodiscard]] bool isWhole() const { return contents.text().size() == fileSize; }
};

/// How a conversion reads files, so that it can also run on files in memory.
class InputFiles {
public:
    InputFiles() = default;
    InputFiles(const InputFiles&) = delete;
    InputFiles& operator=(const InputFiles&) = delete;
    virtual ~InputFiles() = default;

    /// All bytes of a file; nothing when it cannot be opened and read. A device, and a file that
    /// does not fit `largestFile`, are refused.
    [[nodiscard]] virtual std::optional<FileContents> read(const std::string& name) = 0;
    /// At least the first `most` bytes of a file, as far as it has so many. A file that cannot be
    /// read again comes whole.
    [[nodiscard]] virtual std::optional<FileStart> readStart(const std::string& name,
                                                             std::size_t /*most*/) {
        std::optional<FileContents> contents = read(name);
        if (!contents) {
            return std::nullopt;
        }
        const std::size_t size = contents->text().size();
        return FileStart{std::move(*contents), size, true};
    }
    /// The first `size` bytes of a file that was read before; nothing when it has fewer by now.
    [[nodiscard]] virtual std::optional<FileContents> readAgain(const std::string& name,
                                                                std::size_t size) {
        std::optional<FileContents> contents = read(name);
        if (!contents || contents->text().size() < size) {
            return std::nullopt;
        }
        contents->shrink(size);
        return contents;
    }
};

}  // namespace mqf2vxb
