#include "vxbtool/convert_files.h"

#include <filesystem>
#include <system_error>

#include <unistd.h>

#include "driver/diagnostics.h"

namespace vxbtool {

namespace fs = std::filesystem;

ConvertFiles::~ConvertFiles() {
    for (const Staged& file : staged_) {
        temporaryFiles_.remove(file.temporary);
    }
}

std::unique_ptr<mqf2vxb::OutputFile> ConvertFiles::create(const std::string& name) {
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    if (fs::exists(status)) {
        if (!fs::is_regular_file(status)) {
            return disk_.create(name);
        }
        if (::access(name.c_str(), W_OK) != 0) {
            return nullptr;
        }
    }
    const fs::path target = mqf2vxb::finalTarget(name);
    const std::string temporary = temporaryFiles_.reserve(target.parent_path());
    if (temporary.empty()) {
        return nullptr;
    }
    staged_.push_back({temporary, target, name});
    if (fs::exists(status)) {
        fs::permissions(temporary, status.permissions(), error);
    }
    return disk_.create(temporary);
}

void ConvertFiles::commit() {
    while (!staged_.empty()) {
        const Staged& file = staged_.back();
        if (!temporaryFiles_.rename(file.temporary, file.target)) {
            mqf2vxb::cannotWrite(file.name);
        }
        staged_.pop_back();
    }
}

}  // namespace vxbtool
