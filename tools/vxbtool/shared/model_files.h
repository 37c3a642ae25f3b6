#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "files/disk_files.h"

namespace vxbtool {

/// The files that one model is read from. The first name that is read is the model's; relative
/// names after it are opened from a base folder.
class ModelFiles final : public mqf2vxb::InputFiles {
public:
    /// An empty `base` is the working directory.
    explicit ModelFiles(std::string base) : base_(std::move(base)) {}

    [[nodiscard]] std::optional<mqf2vxb::FileContents> read(const std::string& name) override;
    [[nodiscard]] std::optional<mqf2vxb::FileStart> readStart(const std::string& name,
                                                              std::size_t most) override;
    [[nodiscard]] std::optional<mqf2vxb::FileContents> readAgain(const std::string& name,
                                                                 std::size_t size) override;

    /// Every path opened so far, in order, each once.
    [[nodiscard]] const std::vector<std::string>& opened() const { return opened_; }
    /// The path that a name in the model led to; other names are paths already.
    [[nodiscard]] const std::string& pathOf(const std::string& name) const;

    /// Names the option that leads to a component which could not be opened, when it lies beside the
    /// model: "; art/car.geo exists: try --base art". Else empty.
    [[nodiscard]] std::string baseHint(const std::string& component) const;

private:
    template <class Read>
    auto open(const std::string& name, Read read);

    mqf2vxb::DiskInputFiles disk_;
    std::string base_;
    std::string model_;
    bool modelRead_ = false;
    std::map<std::string, std::string> paths_;  // of the names read after the model's
    std::vector<std::string> opened_;
};

}  // namespace vxbtool
