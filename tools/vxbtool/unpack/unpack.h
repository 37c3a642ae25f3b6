#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool unpack": the model that a VXB file was made of, as far as the file tells it.
void addUnpack(CLI::App& app, Session& session);

}  // namespace vxbtool
