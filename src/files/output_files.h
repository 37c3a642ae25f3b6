#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace mqf2vxb {

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

/// How a conversion makes files, so that it can also write to memory or to nowhere.
class OutputFiles {
public:
    OutputFiles() = default;
    OutputFiles(const OutputFiles&) = delete;
    OutputFiles& operator=(const OutputFiles&) = delete;
    virtual ~OutputFiles() = default;

    /// Creates or empties a file; null when that cannot be done.
    [[nodiscard]] virtual std::unique_ptr<OutputFile> create(const std::string& name) = 0;
    /// Whether a file has this name, which creating it would empty.
    [[nodiscard]] virtual bool exists(const std::string& /*name*/) const { return false; }
    /// Whether both names lead to one file, now or after one of them is created.
    [[nodiscard]] virtual bool same(const std::string& one, const std::string& other) const {
        return one == other;
    }
};

}  // namespace mqf2vxb
