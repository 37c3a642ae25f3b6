#include "driver/inputs.h"

#include "driver/diagnostics.h"

namespace mqf2vxb {

FileContents Inputs::open(const std::string& name) {
    std::optional<FileContents> contents = files_.read(name);
    if (!contents) {
        cannotOpen(name);
    }
    names_.push_back(name);
    if (observer_ != nullptr) {
        observer_->opened(name, contents->text());
    }
    return std::move(*contents);
}

}  // namespace mqf2vxb
