#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool view".
void addView(CLI::App& app, Session& session);

}  // namespace vxbtool
