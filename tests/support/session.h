#pragma once

#include <string>

#include "support/test_folder.h"

namespace mqf2vxb::tests {

/// Runs a command line of the programs in a folder.
TestFolder::Result runIn(const TestFolder& folder, const std::string& command);

/// Runs the commands of a session in a folder. A line with "$ " is a command, the lines behind it are
/// what it prints, the last of them "[N]" when it ends with another status than 0.
void expectSession(const TestFolder& folder, const std::string& name);

}  // namespace mqf2vxb::tests
