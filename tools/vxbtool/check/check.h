#pragma once

#include <string>

#include "vxb/vxb_file.h"
#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

/// What check has to say of one VXB file, as `options` select it.
FileReport checkFile(const std::string& name, const ReportOptions& options);

/// The same of one that was read already.
FileReport reportOn(const mqf2vxb::VxbFile& file, const std::string& name,
                    const ReportOptions& options);

/// Adds "vxbtool check".
void addCheck(CLI::App& app, Session& session);

}  // namespace vxbtool
