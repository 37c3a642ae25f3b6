#pragma once

#include <atomic>
#include <csignal>
#include <thread>

#include "vxbtool/shared/temporary_files.h"

namespace vxbtool {

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
