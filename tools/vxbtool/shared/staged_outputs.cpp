#include "vxbtool/shared/staged_outputs.h"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/diagnostics.h"
#include "text/scan.h"

namespace vxbtool {
namespace {

namespace fs = std::filesystem;

/// What the program has open under this number; closed at the end when it is `owned`.
class OpenFile final : public mqf2vxb::OutputFile {
public:
    OpenFile(int descriptor, bool owned) : descriptor_(descriptor), owned_(owned) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() override { (void)close(); }

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
    [[nodiscard]] bool close() override {
        return !std::exchange(owned_, false) || ::close(descriptor_) == 0;
    }

private:
    int descriptor_;
    bool owned_;
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
        // Of a folder's number, what follows it is a file in that folder.
        if (name.find('/') == std::string_view::npos) {
            mqf2vxb::scanInteger(name, descriptor);
        }
    }
    return descriptor;
}

}  // namespace

StagedOutputs::~StagedOutputs() {
    for (const Staged& file : staged_) {
        temporaryFiles_.remove(file.temporary);
    }
}

std::unique_ptr<mqf2vxb::OutputFile> StagedOutputs::create(const std::string& name) {
    std::error_code error;
    const fs::file_status status = fs::status(name, error);
    if (existing_ == ExistingFiles::kept && fs::exists(fs::symlink_status(name, error))) {
        errno = EEXIST;
        return nullptr;
    }
    if (fs::exists(status)) {
        // Opened anew, a file that standard output was redirected to would lose what it holds.
        if (const int descriptor = descriptorOf(name); descriptor >= 0) {
            return std::make_unique<OpenFile>(descriptor, false);
        }
        if (!fs::is_regular_file(status)) {
            return disk_.create(name);
        }
        if (::access(name.c_str(), W_OK) != 0) {
            return nullptr;
        }
    }
    // A link that appears only now is not followed either: then it is what is there.
    const fs::path target = existing_ == ExistingFiles::kept ? fs::absolute(name, error)
                                                             : fs::path(mqf2vxb::finalTarget(name));
    // A file that only its owner may read must not be readable by others while its successor is made.
    constexpr mode_t ownerOnly = 0600;
    constexpr mode_t everybody = 0666;
    const TemporaryFiles::Created temporary =
        temporaryFiles_.create(target.parent_path(), fs::exists(status) ? ownerOnly : everybody);
    if (temporary.descriptor < 0) {
        return nullptr;
    }
    auto file = std::make_unique<OpenFile>(temporary.descriptor, true);
    staged_.push_back({temporary.file, target.filename().string(), name});
    if (fs::exists(status)) {
        // Without the bits that would run the new file as another user.
        const auto kept = static_cast<mode_t>(status.permissions() & fs::perms::all);
        if (::fchmod(temporary.descriptor, kept) != 0) {
            return nullptr;
        }
    }
    return file;
}

void StagedOutputs::commit() {
    std::vector<Staged> placed;
    while (!staged_.empty()) {
        const Staged& file = staged_.back();
        if (!temporaryFiles_.rename(file.temporary, file.target, existing_)) {
            const int error = errno;
            if (existing_ == ExistingFiles::kept) {  // what was placed has replaced nothing
                for (const Staged& other : placed) {
                    ::unlinkat(other.temporary.folder->descriptor(), other.target.c_str(), 0);
                }
            }
            mqf2vxb::cannotWrite(file.name, error);
        }
        placed.push_back(file);
        staged_.pop_back();
    }
}

void StagedOutputs::write(const std::string& name, std::string_view bytes) {
    const std::unique_ptr<mqf2vxb::OutputFile> file = create(name);
    if (!file) {
        mqf2vxb::cannotOpen(name, mqf2vxb::Access::write, errno);
    }
    if (!file->write(bytes) || !file->close()) {
        mqf2vxb::cannotWrite(name, errno);
    }
}

void writeOutput(const std::string& name, std::string_view bytes) {
    TemporaryFiles temporaryFiles;
    const SignalWatch signalWatch(temporaryFiles);
    StagedOutputs outputs(temporaryFiles);
    outputs.write(name, bytes);
    outputs.commit();
}

}  // namespace vxbtool
