#pragma once

#include <string>

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// docs/findings.md: every kind of finding of "check" and "lint", made from their constants.
std::string catalogueDocument();

/// Adds "vxbtool finding-catalogue", which prints that page and is not listed in the help.
void addFindingCatalogue(CLI::App& app, Session& session);

}  // namespace vxbtool
