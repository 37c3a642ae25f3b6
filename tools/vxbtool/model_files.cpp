#include "vxbtool/model_files.h"

#include <filesystem>

namespace vxbtool {

std::optional<mqf2vxb::FileContents> ModelFiles::read(const std::string& name) {
    std::string path = name;
    bool first = true;
    if (modelRead_) {
        path = (std::filesystem::path(base_) / name).string();
        first = paths_.insert_or_assign(name, path).second;
    }
    modelRead_ = true;
    std::optional<mqf2vxb::FileContents> contents = disk_.read(path);
    if (contents && first) {
        opened_.push_back(path);
    }
    return contents;
}

std::unique_ptr<mqf2vxb::OutputFile> ModelFiles::create(const std::string& /*name*/) {
    return nullptr;
}

bool ModelFiles::same(const std::string& one, const std::string& other) const {
    return disk_.same(one, other);
}

const std::string& ModelFiles::pathOf(const std::string& name) const {
    const auto found = paths_.find(name);
    return found == paths_.end() ? name : found->second;
}

}  // namespace vxbtool
