#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool completion", which knows the commands that `app` has when it runs.
void addCompletion(CLI::App& app, Session& session);

}  // namespace vxbtool
