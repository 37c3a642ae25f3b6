#pragma once

#include <new>
#include <stdexcept>

#include "base/diagnostics.h"

namespace mqf2vxb {

/// Runs `work` and returns its result. When it cannot have the memory that it needs, `report` reports
/// that and does not return.
template <class Work, class Report>
[[gnu::always_inline]] inline decltype(auto) withMemory(Work&& work, Report&& report) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        report();
        throw;
    } catch (const std::length_error&) {  // more than any memory holds
        report();
        throw;
    }
}

/// The same for work outside the tables, which have reports of their own.
template <class Work>
[[gnu::always_inline]] inline decltype(auto) withMemory(Work&& work) {
    return withMemory(work, outOfMemory);
}

}  // namespace mqf2vxb
