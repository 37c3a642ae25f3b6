#include "vxbtool/import/progress_line.h"

#include <cstdio>
#include <utility>

#include <unistd.h>

#include <fmt/core.h>

#include "vxbtool/shared/printable.h"

namespace vxbtool::importing {

ProgressLine::ProgressLine(std::string subject)
    : subject_(printable(subject)), terminal_(isatty(STDERR_FILENO) != 0) {}

ProgressLine::~ProgressLine() {
    if (shown_) {
        fmt::print(stderr, "\r\x1b[K");
    }
}

void ProgressLine::step(const char* what) {
    step_ = what;
    tick();
}

void ProgressLine::tick() {
    using namespace std::chrono_literals;
    const Clock::time_point now = Clock::now();
    const bool due = shown_ ? now - last_ > 200ms : now - start_ > 500ms;
    if (!terminal_ || !due) {
        return;
    }
    shown_ = true;
    last_ = now;
    const std::chrono::duration<double> taken = now - start_;
    fmt::print(stderr, "\r\x1b[K{}: {}, {:.0f} s", subject_, step_, taken.count());
    std::fflush(stderr);
}

}  // namespace vxbtool::importing
