#pragma once

#include <string>

#include "vxb/vxb_file.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

class JsonOutput;
class TextOutput;

/// Writes one screen for people about a file.
void writeInfo(const std::string& name, const mqf2vxb::VxbFile& file, TextOutput& output);
/// Writes an object of "files" as docs/json-schema.md describes it.
void writeInfo(const std::string& name, const mqf2vxb::VxbFile& file, JsonOutput& output);

/// Adds "vxbtool info".
void addInfo(CLI::App& app, Session& session);

}  // namespace vxbtool
