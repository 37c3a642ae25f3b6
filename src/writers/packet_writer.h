#pragma once

#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

/// Writes every packet of the file. Reports corners on different texture pages and, in a strip, a
/// polygon type that has no drawing code, when the words before are put.
void writePrimitivePackets(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream);

}  // namespace mqf2vxb
