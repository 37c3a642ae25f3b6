#pragma once

#include "vxbtool/lint/findings.h"
#include "vxbtool/lint/trace.h"

namespace vxbtool::lint {

/// What the readers left of the text: short lines, words that are no numbers, words, lines and keys
/// that are ignored.
void checkText(const Trace& trace, Findings& findings);

}  // namespace vxbtool::lint
