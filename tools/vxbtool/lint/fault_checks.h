#pragma once

#include "vxbtool/lint/model_checks.h"

namespace vxbtool::lint {

/// What keeps a model from being converted, each cause at its place. Only for a model that failed,
/// since it tells causes that may do no harm in a model that converts. Looks at the files that were
/// read to their ends; `organised` is whether the tables got their final form.
void checkFaults(const LintedModel& linted, bool organised, Findings& findings);

}  // namespace vxbtool::lint
