#include "vxbtool/import/guarded.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/core.h>

#include "vxbtool/shared/printable.h"

namespace vxbtool::importing {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool limitsMemory = false;  // the sanitizer claims more of it than any limit allows
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool limitsMemory = false;
#else
constexpr bool limitsMemory = true;
#endif
#else
constexpr bool limitsMemory = true;
#endif

// What the readers of the formats take of memory is some tens of times the file, of time less than a
// second for a MiB; lies and compression take more.
constexpr std::uint64_t leastMemory = std::uint64_t{4} << 30U;
constexpr std::uint64_t memoryPerByte = 64;
constexpr std::uint64_t leastSeconds = 60;
constexpr std::uint64_t bytesPerSecond = 100'000;

rlim_t limitOf(__rlimit_resource_t resource) {
    rlimit limits{};
    return getrlimit(resource, &limits) == 0 ? limits.rlim_cur : RLIM_INFINITY;
}

void setLimit(__rlimit_resource_t resource, rlim_t value) {
    rlimit limits{};
    if (getrlimit(resource, &limits) == 0) {
        limits.rlim_cur = std::min(value, limits.rlim_max);
        setrlimit(resource, &limits);
    }
}

std::string causeOf(int signal) {
    switch (signal) {
    case SIGXCPU: return "reading it takes too long";
    case SIGKILL: return "the process that read it was killed; there may be too little memory";
    default: return fmt::format("Assimp crashes on it ({})", strsignal(signal));
    }
}

}  // namespace

int runGuarded(const std::function<int()>& work,
               const std::function<int(const std::string&)>& died) {
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) {
        return work();
    }
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        int status = 1;
        if (getppid() == parent) {
            try {
                status = work();
            } catch (const std::exception& error) {
                fmt::print(stderr, "vxbtool: {}\n", printableLines(error.what()));
            }
        }
        // What could not be written is a failure.
        status = std::fflush(nullptr) == 0 ? status : 1;
        _exit(status);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    const int signal = WTERMSIG(status);
    // Somebody ended the run, who is to see that it ended so.
    if (signal == SIGINT || signal == SIGTERM || signal == SIGHUP || signal == SIGPIPE) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    return died(causeOf(signal));
}

ReadingLimits::ReadingLimits()
    : memoryBefore_(limitOf(RLIMIT_AS)), timeBefore_(limitOf(RLIMIT_CPU)) {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    secondsBefore_ = static_cast<std::uint64_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec);
    set();
}

ReadingLimits::~ReadingLimits() {
    setLimit(RLIMIT_AS, memoryBefore_);
    setLimit(RLIMIT_CPU, timeBefore_);
}

void ReadingLimits::add(std::uint64_t bytes) {
    bytes_ += bytes;
    set();
}

void ReadingLimits::set() const {
    if (limitsMemory) {
        setLimit(RLIMIT_AS, std::min(memoryBefore_, leastMemory + bytes_ * memoryPerByte));
    }
    setLimit(RLIMIT_CPU,
             std::min(timeBefore_, secondsBefore_ + leastSeconds + bytes_ / bytesPerSecond));
}

}  // namespace vxbtool::importing
