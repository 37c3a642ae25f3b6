#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "vxbtool/convert/job.h"

namespace vxbtool {

/// Tells on standard error how a run goes: a progress line when that is a terminal and there are
/// several models, the messages of each model in the order of the command line, and at the end
/// which models failed. Not for several threads at once.
class ConvertConsole {
public:
    explicit ConvertConsole(std::span<const ConvertJob> jobs);

    /// The job with this index has ended.
    void ended(std::size_t index, ConvertOutcome outcome);
    /// Ends the run; true when every model was converted.
    bool finish();

private:
    static void print(const std::string& text);

    std::span<const ConvertJob> jobs_;
    bool showProgress_;
    std::vector<ConvertOutcome> outcomes_;
    std::vector<bool> hasEnded_;
    std::size_t endedCount_ = 0;
    std::size_t printedCount_ = 0;
};

}  // namespace vxbtool
