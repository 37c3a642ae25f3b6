#pragma once

#include <set>
#include <string>

#include "vxb/vxb_file.h"
#include "vxbtool/shared/session.h"

namespace vxbtool {

class JsonOutput;
class TextOutput;

/// The sections that are wanted; all when it is empty.
using WantedSections = std::set<std::string_view>;

/// Writes every word for people.
void writeDump(const mqf2vxb::VxbFile& file, const WantedSections& wanted, TextOutput& output);
/// Writes the decoded structure as docs/json-schema.md describes it.
void writeDump(const std::string& name, const mqf2vxb::VxbFile& file, const WantedSections& wanted,
               JsonOutput& output);

/// The regions of the wanted sections.
std::vector<mqf2vxb::Region> wantedRegions(const mqf2vxb::VxbFile& file,
                                           const WantedSections& wanted);

/// Adds "vxbtool dump".
void addDump(CLI::App& app, Session& session);

}  // namespace vxbtool
