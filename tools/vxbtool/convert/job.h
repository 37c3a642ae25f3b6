#pragma once

#include <set>
#include <string>

#include "model/options.h"
#include "vxbtool/shared/file_place.h"
#include "vxbtool/shared/finding_report.h"
#include "vxbtool/shared/temporary_files.h"

namespace vxbtool {

/// One model to convert.
struct ConvertJob {
    std::string model;
    mqf2vxb::RunOptions options;  ///< with the output's complete name
    std::string depfile;          ///< empty: none
    std::string base;             ///< where relative component names are opened; empty: here
    bool lint = false;
};

/// What the jobs of one run have in common.
struct ConvertRun {
    std::set<FilePlace> outputs;  ///< of every output of every job
    TemporaryFiles temporaryFiles;
    ReportOptions report;
    TextStyle style;  ///< of the messages
};

struct ConvertOutcome {
    bool converted = false;
    std::string messages;  ///< for standard error, every line ended; none when JSON is wanted
    FileReport report;     ///< why it failed, and what lint found
};

/// Converts one model. Its outputs appear all whole or, when it fails, not at all.
ConvertOutcome convertModel(const ConvertJob& job, ConvertRun& run);

}  // namespace vxbtool
