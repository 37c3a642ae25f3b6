#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool import": a model of another program's becomes the files of a model.
void addImport(CLI::App& app, Session& session);

}  // namespace vxbtool
