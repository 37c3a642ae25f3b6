#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "files/output_files.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::model_text {

/// Whether a model can have this name: its files are single words in the MQF file, and what the
/// converter makes of "a.b.mqf" is "a.vxb".
bool isModelName(std::string_view name);

/// The names of the files that a model is written as, NAME.mqf first, without a folder: NAME.geo,
/// NAME.srf, NAME.frm, NAME.bnd, NAME-0.pxl and so on, NAME-0.clp and so on (one alone is NAME.pxl or
/// NAME.clp).
std::vector<std::string> fileNames(const ModelText& model, std::string_view name);

/// Writes the model's files into `folder` ("" is the working directory), which has to be there. Names
/// inside the MQF file are without the folder. With StagedOutputs and its commit(), the set appears
/// whole or not at all. Throws mqf2vxb::Report, of a file that cannot be written.
///
/// Floats are written as the shortest decimals that are read as the same float; a caller who wants
/// them shorter still takes shortestFixed() or rounds them before. Lines are kept below the 255
/// characters that a reader takes, whatever comments and lists hold; control characters in comments
/// become blanks.
void writeModelFiles(const ModelText& model, const std::string& folder, const std::string& name,
                     mqf2vxb::OutputFiles& files);

}  // namespace vxbtool::model_text
