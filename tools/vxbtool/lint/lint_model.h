#pragma once

#include <string>
#include <vector>

#include "files/input_files.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool::lint {

/// Everything that converts in this model at this scale but is surely not meant. When the model
/// does not convert, the first finding is that error; when the conversion ended before the tables were
/// final, the only other findings are those that the text of the files shows.
std::vector<ReportedFinding> lintModel(const std::string& mqfName, float scale,
                                       mqf2vxb::InputFiles& files);

}  // namespace vxbtool::lint
