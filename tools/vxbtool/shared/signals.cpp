#include "vxbtool/shared/signals.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

namespace vxbtool {
namespace {

/// Ends the watching thread.
constexpr int wakeUp = SIGUSR1;

}  // namespace

TemporaryFiles::Created TemporaryFiles::create(const std::string& folder, mode_t permissions) {
    constexpr int mostTries = 1000;  // names that an earlier, killed run left behind
    const std::lock_guard lock(mutex_);
    for (int i = 0; i < mostTries; ++i) {
        // Not made from the output's name, which may be as long as names can be.
        const std::string leaf = fmt::format(".vxbtool-{}-{}.tmp", ::getpid(), ++counter_);
        std::string name = std::filesystem::path(folder) / leaf;
        const int file = ::open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, permissions);
        if (file >= 0) {
            names_.insert(name);
            return {name, file};
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return {{}, -1};
}

bool TemporaryFiles::rename(const std::string& file, const std::string& target,
                            ExistingFiles existing) {
    const std::lock_guard lock(mutex_);
    const unsigned flags = existing == ExistingFiles::kept ? RENAME_NOREPLACE : 0;
    int result = ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, target.c_str(), flags);
    if (result != 0 && errno == EINVAL) {  // the file system does not know the flag
        result = std::rename(file.c_str(), target.c_str());
    }
    if (result != 0) {
        return false;
    }
    names_.erase(file);
    return true;
}

void TemporaryFiles::remove(const std::string& file) {
    const std::lock_guard lock(mutex_);
    if (names_.erase(file) != 0) {
        ::unlink(file.c_str());
    }
}

std::unique_lock<std::mutex> TemporaryFiles::removeAll() {
    std::unique_lock lock(mutex_);
    for (const std::string& name : names_) {
        ::unlink(name.c_str());
    }
    names_.clear();
    return lock;
}

SignalWatch::SignalWatch(TemporaryFiles& files) : files_(files) {
    ::sigemptyset(&signals_);
    ::sigaddset(&signals_, wakeUp);
    for (const int signal : std::array{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGVTALRM,
                                       SIGPROF, SIGXCPU, SIGUSR2}) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_IGN) {
            ::sigaddset(&signals_, signal);
        }
    }
    ::pthread_sigmask(SIG_BLOCK, &signals_, &before_);
    // A reader of the reports that goes away must not leave temporary files behind.
    std::signal(SIGPIPE, SIG_IGN);
    thread_ = std::thread([this] { watch(); });
}

SignalWatch::~SignalWatch() {
    ending_ = true;
    ::pthread_kill(thread_.native_handle(), wakeUp);
    thread_.join();
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void SignalWatch::watch() {
    int signal = 0;
    ::sigwait(&signals_, &signal);
    if (signal == wakeUp && ending_) {
        return;
    }
    const std::unique_lock lock = files_.removeAll();
    // The shell is to see that the signal ended the program.
    std::signal(signal, SIG_DFL);
    ::pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
    ::raise(signal);
}

}  // namespace vxbtool
