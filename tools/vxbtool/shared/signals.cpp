#include "vxbtool/shared/signals.h"

#include <array>
#include <mutex>

namespace vxbtool {
namespace {

/// Ends the watching thread.
constexpr int wakeUp = SIGUSR1;

}  // namespace

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
