#include "vxbtool/shared/temporary_files.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vxbtool {

Folder::Folder(const std::string& path)
    : descriptor_(::open(path.empty() ? "." : path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {}

Folder::~Folder() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

/// A folder is opened once for all its files: there may be more of them than descriptors.
std::shared_ptr<const Folder> TemporaryFiles::open(const std::string& folder) {
    std::weak_ptr<const Folder>& known = folders_[folder];
    std::shared_ptr<const Folder> opened = known.lock();
    if (!opened) {
        opened = std::make_shared<const Folder>(folder);
        known = opened;
    }
    return opened;
}

TemporaryFiles::Created TemporaryFiles::create(const std::string& folder, mode_t permissions) {
    constexpr int mostTries = 1000;  // names that an earlier, killed run left behind
    const std::lock_guard lock(mutex_);
    TemporaryFile file{open(folder), {}};
    for (int i = 0; i < mostTries && file.folder->descriptor() >= 0; ++i) {
        // Not made from the output's name, which may be as long as names can be.
        file.name = fmt::format(".vxbtool-{}-{}.tmp", ::getpid(), ++counter_);
        const int descriptor = ::openat(file.folder->descriptor(), file.name.c_str(),
                                        O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, permissions);
        if (descriptor >= 0) {
            files_.insert(file);
            return {file, descriptor};
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {{}, -1};
}

bool TemporaryFiles::rename(const TemporaryFile& file, const std::string& name,
                            ExistingFiles existing) {
    const std::lock_guard lock(mutex_);
    const int folder = file.folder->descriptor();
    const unsigned flags = existing == ExistingFiles::kept ? RENAME_NOREPLACE : 0;
    int result = ::renameat2(folder, file.name.c_str(), folder, name.c_str(), flags);
    if (result != 0 && errno == EINVAL) {  // the file system does not know the flag
        result = ::renameat(folder, file.name.c_str(), folder, name.c_str());
    }
    if (result != 0) {
        return false;
    }
    files_.erase(file);
    return true;
}

void TemporaryFiles::remove(const TemporaryFile& file) {
    const std::lock_guard lock(mutex_);
    if (files_.erase(file) != 0) {
        ::unlinkat(file.folder->descriptor(), file.name.c_str(), 0);
    }
}

std::unique_lock<std::mutex> TemporaryFiles::removeAll() {
    std::unique_lock lock(mutex_);
    for (const TemporaryFile& file : files_) {
        ::unlinkat(file.folder->descriptor(), file.name.c_str(), 0);
    }
    files_.clear();
    return lock;
}

}  // namespace vxbtool
