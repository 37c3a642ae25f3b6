#pragma once

#include "vxbtool/shared/session.h"

namespace CLI {
class App;
}  // namespace CLI

namespace vxbtool {

/// Adds "vxbtool render": a picture of a model.
void addRender(CLI::App& app, Session& session);

}  // namespace vxbtool
