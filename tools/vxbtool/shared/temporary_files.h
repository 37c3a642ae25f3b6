#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <tuple>

#include <sys/types.h>

namespace vxbtool {

/// What becomes of a file that has the name of an output.
enum class ExistingFiles { replaced, kept };

/// A folder that is held open, so that its files stay within reach when its name changes.
class Folder {
public:
    /// The descriptor is negative when the folder cannot be opened.
    explicit Folder(const std::string& path);
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

/// An unfinished file in a folder.
struct TemporaryFile {
    std::shared_ptr<const Folder> folder;
    std::string name;  ///< in the folder

    bool operator<(const TemporaryFile& other) const {
        return std::tie(folder, name) < std::tie(other.folder, other.name);
    }
};

/// The unfinished files of a run, known in one place so that a signal can clear them away. Any
/// thread may call.
class TemporaryFiles {
public:
    /// A new file, open for writing.
    struct Created {
        TemporaryFile file;
        int descriptor = -1;  ///< negative, with errno set, when the file could not be created
    };
    /// Creates an empty file with a new name in `folder` and with these permissions, less the umask.
    [[nodiscard]] Created create(const std::string& folder, mode_t permissions);
    /// Gives a finished file its right name in its folder; false, with errno set, when that cannot be
    /// done.
    [[nodiscard]] bool rename(const TemporaryFile& file, const std::string& name,
                              ExistingFiles existing);
    void remove(const TemporaryFile& file);
    /// Removes them all. No file appears or gets its name as long as the lock lives.
    [[nodiscard]] std::unique_lock<std::mutex> removeAll();

private:
    std::shared_ptr<const Folder> open(const std::string& folder);

    std::mutex mutex_;
    std::set<TemporaryFile> files_;
    std::map<std::string, std::weak_ptr<const Folder>> folders_;  // those with unfinished files
    unsigned counter_ = 0;
};

}  // namespace vxbtool
