#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "export": a VXB file as glTF, and its images as PNG files.
void addExport(CLI::App& app, Session& session);

}  // namespace vxbtool
