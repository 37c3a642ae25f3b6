#pragma once

#include <chrono>
#include <string>

namespace vxbtool::importing {

/// A line on a terminal that tells what is done at the moment, once it takes long.
class ProgressLine {
public:
    /// Shows nothing unless standard error is a terminal.
    explicit ProgressLine(std::string subject);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    /// Wipes the line away.
    ~ProgressLine();

    void step(const char* what);
    /// Still the same; to be called now and then.
    void tick();

private:
    using Clock = std::chrono::steady_clock;

    std::string subject_;
    std::string step_;
    bool terminal_;
    bool shown_ = false;
    Clock::time_point start_ = Clock::now();
    Clock::time_point last_ = start_;
};

}  // namespace vxbtool::importing
