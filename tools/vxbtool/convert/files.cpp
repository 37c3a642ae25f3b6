#include "vxbtool/convert/files.h"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <unistd.h>

#include "base/diagnostics.h"
#include "text/scan.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;

/// What the program has open under this number.
class OpenFile final : public mqf2vxb::OutputFile {
public:
    explicit OpenFile(int descriptor) : descriptor_(descriptor) {}

    [[nodiscard]] bool write(std::string_view bytes) override {
        while (!bytes.empty()) {
            const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
            if (written >= 0) {
                bytes.remove_prefix(static_cast<std::size_t>(written));
            } else if (errno != EINTR) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] bool close() override { return true; }

private:
    int descriptor_;
};

/// The number of "/dev/stdout", "/dev/fd/3" and the like; -1 for any other name.
int descriptorOf(std::string_view name) {
    constexpr std::string_view numbered = "/dev/fd/";
    if (name == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    if (name == "/dev/stderr") {
        return STDERR_FILENO;
    }
    std::int32_t descriptor = -1;
    if (name.starts_with(numbered)) {
        name.remove_prefix(numbered.size());
        mqf2vxb::scanInteger(name, descriptor);
    }
    return descriptor;
}

}  // namespace

ConvertFiles::~ConvertFiles() {
    for (const Staged& file : staged_) {
        temporaryFiles_.remove(file.temporary);
    }
}

std::unique_ptr<mqf2vxb::OutputFile> ConvertFiles::create(const std::string& name) {
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    if (fs::exists(status)) {
        // Opened anew, a file that standard output was redirected to would lose what it holds.
        if (const int descriptor = descriptorOf(name); descriptor >= 0) {
            return std::make_unique<OpenFile>(descriptor);
        }
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
