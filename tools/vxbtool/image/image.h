#pragma once

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// Adds "vxbtool image": PXL files of pictures.
void addImage(CLI::App& app, Session& session);

}  // namespace vxbtool
