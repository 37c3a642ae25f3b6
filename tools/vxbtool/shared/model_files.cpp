#include "vxbtool/shared/model_files.h"

#include <filesystem>
#include <system_error>

#include <fmt/core.h>

namespace vxbtool {

/// What `read` makes of the path that the name leads to.
template <class Read>
auto ModelFiles::open(const std::string& name, Read read) {
    std::string path = name;
    bool first = true;
    if (!modelRead_) {
        model_ = name;
    } else {
        path = (std::filesystem::path(base_) / name).string();
        first = paths_.insert_or_assign(name, path).second;
    }
    modelRead_ = true;
    auto result = read(path);
    if (result && first) {
        opened_.push_back(path);
    }
    return result;
}

std::optional<mqf2vxb::FileContents> ModelFiles::read(const std::string& name) {
    return open(name, [this](const std::string& path) { return disk_.read(path); });
}

std::optional<mqf2vxb::FileStart> ModelFiles::readStart(const std::string& name, std::size_t most) {
    return open(name, [=, this](const std::string& path) { return disk_.readStart(path, most); });
}

std::optional<mqf2vxb::FileContents> ModelFiles::readAgain(const std::string& name,
                                                           std::size_t size) {
    return open(name, [=, this](const std::string& path) { return disk_.readAgain(path, size); });
}

const std::string& ModelFiles::pathOf(const std::string& name) const {
    const auto found = paths_.find(name);
    return found == paths_.end() ? name : found->second;
}

std::string ModelFiles::baseHint(const std::string& component) const {
    const std::filesystem::path folder = std::filesystem::path(model_).parent_path();
    std::error_code error;
    if (!base_.empty() || folder.empty() || !std::filesystem::exists(folder / component, error)) {
        return {};
    }
    return fmt::format("; {} exists: try --base {}", (folder / component).string(),
                       folder.string());
}

}  // namespace vxbtool
