#pragma once

#include "vxbtool/shared/session.h"

namespace CLI {
class App;
}  // namespace CLI

namespace vxbtool {

/// Adds "vxbtool diff": what became of a model.
void addDiff(CLI::App& app, Session& session);

}  // namespace vxbtool
