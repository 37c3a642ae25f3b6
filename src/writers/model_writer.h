#pragma once

#include "files/file_system.h"
#include "model/model.h"
#include "model/options.h"

namespace mqf2vxb {

/// Writes the model: the VXB file and, when asked for, its hex text. Every table is final.
void writeModel(const Model& model, const RunOptions& options, FileSystem& files);

}  // namespace mqf2vxb
