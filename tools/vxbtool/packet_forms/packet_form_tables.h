#pragma once

#include <string>

#include "vxbtool/shared/session.h"

namespace vxbtool {

/// docs/packet-forms.md: the words of every packet form, from the description that the converter
/// writes them by.
std::string packetFormDocument();

/// Adds the hidden subcommand that prints it.
void addPacketFormTables(CLI::App& app, Session& session);

}  // namespace vxbtool
