#pragma once

#include <string>
#include <vector>

#include "files/input_files.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool::lint {

/// Everything that converts in this model at this scale but is probably unintended. A model that does
/// not convert has that as its first finding, an error, and beside it only what its text shows when
/// the conversion ended before the tables were final.
std::vector<ReportedFinding> lintModel(const std::string& mqfName, float scale,
                                       mqf2vxb::InputFiles& files);

}  // namespace vxbtool::lint
