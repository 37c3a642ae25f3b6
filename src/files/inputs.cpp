#include "files/inputs.h"

#include <cerrno>

#include "base/diagnostics.h"

namespace mqf2vxb {

FileContents Inputs::open(const std::string& name) {
    errno = 0;
    std::optional<FileContents> contents = files_.read(name);
    if (!contents) {
        cannotOpen(name, Access::read, errno);
    }
    names_.push_back(name);
    if (observer_ != nullptr) {
        observer_->opened(name, contents->text());
    }
    return std::move(*contents);
}

FileStart Inputs::openStart(const std::string& name, std::size_t most) {
    if (observer_ != nullptr) {
        const auto known = shared_.find(name);
        FileContents contents = known != shared_.end()
                                    ? known->second
                                    : shared_.emplace(name, open(name)).first->second;
        const std::size_t size = contents.text().size();
        return {std::move(contents), size};
    }
    errno = 0;
    std::optional<FileStart> start = files_.readStart(name, most);
    if (!start) {
        cannotOpen(name, Access::read, errno);
    }
    names_.push_back(name);
    return std::move(*start);
}

}  // namespace mqf2vxb
