#pragma once

#include <atomic>
#include <csignal>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace vxbtool {

/// What becomes of a file that has the name of an output.
enum class ExistingFiles { replaced, kept };

/// The unfinished files of a run, known in one place so that a signal can clear them away. Any
/// thread may call.
class TemporaryFiles {
public:
    /// A new file, open for writing.
    struct Created {
        std::string name;
        int descriptor;  ///< negative when the file could not be created
    };
    /// Creates an empty file with a new name in `folder` and with these permissions, less the umask.
    [[nodiscard]] Created create(const std::string& folder, mode_t permissions);
    /// Gives a finished file its right name; false, with errno set, when that cannot be done.
    [[nodiscard]] bool rename(const std::string& file, const std::string& target,
                              ExistingFiles existing);
    void remove(const std::string& file);
    /// Removes them all. No file appears or gets its name as long as the lock lives.
    [[nodiscard]] std::unique_lock<std::mutex> removeAll();

private:
    std::mutex mutex_;
    std::set<std::string> names_;
    unsigned counter_ = 0;
};

/// While it lives, the signals with which users, terminals, timers and limits end a program remove
/// the temporary files first, unless they are ignored, as SIGHUP is under nohup. It is made before
/// other threads are started, so that they inherit that they do not receive these signals.
class SignalWatch {
public:
    explicit SignalWatch(TemporaryFiles& files);
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;
    ~SignalWatch();

private:
    void watch();

    TemporaryFiles& files_;
    sigset_t signals_{};
    sigset_t before_{};
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

}  // namespace vxbtool
