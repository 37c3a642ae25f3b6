#include "vxbtool/convert/console.h"

#include <cstdio>
#include <utility>

#include <unistd.h>

#include <fmt/core.h>

#include "vxbtool/shared/printable.h"

namespace vxbtool {
namespace {

/// Goes to the start of the line and clears it.
constexpr const char* clearLine = "\r\x1b[K";

}  // namespace

ConvertConsole::ConvertConsole(std::span<const ConvertJob> jobs)
    : jobs_(jobs),
      showProgress_(jobs.size() > 1 && ::isatty(STDERR_FILENO) != 0),
      outcomes_(jobs.size()),
      hasEnded_(jobs.size()) {}

void ConvertConsole::ended(std::size_t index, ConvertOutcome outcome) {
    outcomes_[index] = std::move(outcome);
    hasEnded_[index] = true;
    ++endedCount_;

    std::string text;
    while (printedCount_ < jobs_.size() && hasEnded_[printedCount_]) {
        text += std::exchange(outcomes_[printedCount_].messages, {});
        ++printedCount_;
    }
    if (showProgress_) {
        constexpr std::size_t longestShown = 50;  // a line that wraps could not be cleared
        text = clearLine + text +
               fmt::format("[{}/{}] {:.{}}", endedCount_, jobs_.size(),
                           printable(jobs_[index].model), longestShown);
    }
    print(text);
}

bool ConvertConsole::finish() {
    std::string failed;
    std::size_t failures = 0;
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
        if (!outcomes_[i].converted) {
            ++failures;
            failed += "  " + printable(jobs_[i].model) + "\n";
        }
    }
    std::string text = showProgress_ ? clearLine : "";
    if (failures != 0 && jobs_.size() > 1) {
        text += fmt::format("\n{} of {} models failed:\n{}", failures, jobs_.size(), failed);
    }
    print(text);
    return failures == 0;
}

void ConvertConsole::print(const std::string& text) {
    // In one piece, so that programs that run side by side do not mix their lines.
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

}  // namespace vxbtool
