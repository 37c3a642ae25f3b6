#pragma once

#include <string>

#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

/// What lint has to say of one model, as `options` select it. Relative names in the model are opened
/// from `base`; empty is the working directory.
FileReport lintFile(const std::string& model, float scale, const std::string& base,
                    const ReportOptions& options);

/// Adds "vxbtool lint".
void addLint(CLI::App& app, Session& session);

}  // namespace vxbtool
