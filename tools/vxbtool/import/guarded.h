#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <sys/resource.h>

namespace vxbtool::importing {

/// Runs work in a process of its own, and returns what it returns as its exit status. When the process
/// ends by a signal instead, `died` is called with the cause: a library that crashes on a damaged file
/// takes nothing else with it. A signal that ends this process ends that one too.
int runGuarded(const std::function<int()>& work,
               const std::function<int(const std::string&)>& died);

/// Bounds what the reading of files may take, while it lives: memory and processor time in proportion
/// to the files' sizes. Memory beyond it cannot be had, time beyond it ends the process.
class ReadingLimits {
public:
    ReadingLimits();
    ReadingLimits(const ReadingLimits&) = delete;
    ReadingLimits& operator=(const ReadingLimits&) = delete;
    ~ReadingLimits();

    /// Allows for another file.
    void add(std::uint64_t bytes);

private:
    void set() const;

    rlim_t memoryBefore_;  ///< the limits of the user, which are not raised
    rlim_t timeBefore_;
    std::uint64_t bytes_ = 0;
    std::uint64_t secondsBefore_ = 0;  ///< of processor time that the process took already
};

}  // namespace vxbtool::importing
