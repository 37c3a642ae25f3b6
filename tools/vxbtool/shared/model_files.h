#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/file_system.h"

namespace vxbtool {

/// The files that one model is read from. The first name that is read is the model's; relative
/// names after it are opened from a base folder. Nothing can be written.
class ModelFiles : public mqf2vxb::FileSystem {
public:
    /// An empty `base` is the working directory.
    explicit ModelFiles(std::string base) : base_(std::move(base)) {}

    [[nodiscard]] std::optional<mqf2vxb::FileContents> read(const std::string& name) override;
    [[nodiscard]] std::optional<mqf2vxb::FileStart> readStart(const std::string& name,
                                                              std::size_t most) override;
    [[nodiscard]] std::optional<mqf2vxb::FileContents> readAgain(const std::string& name,
                                                                 std::size_t size) override;
    [[nodiscard]] std::unique_ptr<mqf2vxb::OutputFile> create(const std::string& name) override;
    [[nodiscard]] bool exists(const std::string& name) const override;
    [[nodiscard]] bool same(const std::string& one, const std::string& other) const override;

    /// Every path opened so far, in order, each once.
    [[nodiscard]] const std::vector<std::string>& opened() const { return opened_; }
    /// The path that a name in the model led to; other names are paths already.
    [[nodiscard]] const std::string& pathOf(const std::string& name) const;

private:
    template <class Read>
    auto open(const std::string& name, Read read);

    mqf2vxb::DiskFileSystem disk_;
    std::string base_;
    bool modelRead_ = false;
    std::map<std::string, std::string> paths_;  // of the names read after the model's
    std::vector<std::string> opened_;
};

}  // namespace vxbtool
