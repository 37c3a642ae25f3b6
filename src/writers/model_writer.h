#pragma once

#include "files/input_files.h"
#include "files/output_files.h"
#include "model/model.h"
#include "model/options.h"

namespace mqf2vxb {

/// Writes the model: the VXB file and, when asked for, its hex text. Every table is final. The data of
/// images is read again from `inputs`.
void writeModel(const Model& model, const RunOptions& options, InputFiles& inputs,
                OutputFiles& outputs);

}  // namespace mqf2vxb
