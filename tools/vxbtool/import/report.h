#pragma once

#include <string>
#include <vector>

#include "vxbtool/import/import_model.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool::importing {

/// The files that a model became.
struct WrittenFiles {
    std::string source;
    std::string model;               ///< path of the MQF file
    std::vector<std::string> files;  ///< paths of all, the MQF file first
};

/// A short table for people of what became of a model.
std::string humanReport(const WrittenFiles& written, const ImportReport& report);

/// The same as the object that docs/json-schema.md tells of.
void writeJsonReport(const WrittenFiles& written, const ImportReport& report, TextOutput& output);

}  // namespace vxbtool::importing
