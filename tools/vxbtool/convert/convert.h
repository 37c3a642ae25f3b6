#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool convert".
void addConvert(CLI::App& app, Session& session);

}  // namespace vxbtool
