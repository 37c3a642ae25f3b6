#include "vxbtool/shared/new_files.h"

#include <filesystem>
#include <system_error>

#include <fmt/core.h>

namespace vxbtool {

namespace fs = std::filesystem;

std::string prepareNewFiles(std::span<const std::string> paths, bool force) {
    std::error_code error;
    for (const fs::path path : paths) {
        const fs::file_status status = fs::status(path, error);
        if (fs::exists(status) && (!force || !fs::is_regular_file(status))) {
            return fmt::format("{} is there already{}", path.string(),
                               fs::is_regular_file(status) ? "; --force replaces it" : "");
        }
        // Without --force nothing is made elsewhere either, by a link that leads to no file yet.
        if (!force && fs::is_symlink(fs::symlink_status(path, error))) {
            return fmt::format("{} is a link; --force makes the file that it names", path.string());
        }
    }
    for (const fs::path path : paths) {
        const fs::path folder = path.parent_path();
        if (folder.empty()) {  // the working directory
            continue;
        }
        fs::create_directories(folder, error);
        if (error && !fs::is_directory(folder)) {
            return fmt::format("{}: {}", folder.string(), error.message());
        }
    }
    return "";
}

}  // namespace vxbtool
