#include "vxbtool/view/open_page.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <vector>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vxbtool::view {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> splitList(const char* variable) {
    const char* const value = std::getenv(variable);
    std::istringstream list(value == nullptr ? "" : value);
    std::vector<std::string> result;
    for (std::string entry; std::getline(list, entry, ':');) {
        if (!entry.empty()) {
            result.push_back(entry);
        }
    }
    return result;
}

/// Whether the shell would find a program of this name.
bool isProgram(const std::string& name) {
    std::vector<std::string> folders = splitList("PATH");
    if (name.find('/') != std::string::npos) {
        folders = {""};
    }
    for (const std::string& folder : folders) {
        const fs::path path = folder.empty() ? fs::path(name) : fs::path(folder) / name;
        std::error_code error;
        if (fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string openPage(const std::string& file) {
    std::vector<std::string> programs = splitList("BROWSER");
    programs.emplace_back("xdg-open");
    for (std::string& program : programs) {
        if (!isProgram(program)) {
            continue;
        }
        std::string path = fs::absolute(file).string();
        const std::array<char*, 3> arguments{program.data(), path.data(), nullptr};
        pid_t child = 0;
        if (const int error = ::posix_spawnp(&child, program.c_str(), nullptr, nullptr,
                                             arguments.data(), environ);
            error != 0) {
            return fmt::format("{} cannot be started: {}", program,
                               std::generic_category().message(error));
        }
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
        return status == 0 ? "" : fmt::format("{} could not show {}", program, file);
    }
    return "nothing is there to show the page with: neither xdg-open nor a program of $BROWSER";
}

}  // namespace vxbtool::view
