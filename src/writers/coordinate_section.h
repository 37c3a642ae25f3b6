#pragma once

#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

/// Writes the hierarchy: one record per coordinate, values as they were read.
void writeCoordinateSection(const Model& model, const OutputLayout& layout,
                            OutputWordStream& stream);

}  // namespace mqf2vxb
