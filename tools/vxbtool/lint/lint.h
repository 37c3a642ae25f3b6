#pragma once

#include <string>
#include <vector>

#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/model_files.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

/// What lint found in one model, as `options` select it, with the paths that the names in `findings`
/// led to.
FileReport lintReport(const std::string& model, std::vector<ReportedFinding> findings,
                      const ModelFiles& files, const ReportOptions& options);

/// Adds "vxbtool lint".
void addLint(CLI::App& app, Session& session);

}  // namespace vxbtool
