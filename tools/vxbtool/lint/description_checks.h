#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/trace.h"

namespace vxbtool::lint {

/// Lines of the MQF file, behind its ID line, that have no effect.
void checkDescription(const TracedFile& mqf, std::span<const TracedLine> lines, Findings& findings);

/// Where the lines stand that name the images of `count` slots.
std::vector<std::size_t> imageLines(const TracedFile& mqf, std::size_t count);

}  // namespace vxbtool::lint
