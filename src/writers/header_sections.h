#pragma once

#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

void writeFileHeader(const Model& model, const OutputLayout& layout, OutputWordStream& stream);
/// One word per block: where its chain of primitive headers starts, or 0.
void writeBlockTable(const Model& model, const OutputLayout& layout, OutputWordStream& stream);
/// The global headers: where the sections start.
void writePrimitiveHeaderSection(const Model& model, const OutputLayout& layout,
                                 OutputWordStream& stream);
/// The primitive headers of the coordinates and of the shared polygons.
void writePrimitiveHeaders(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream);

}  // namespace mqf2vxb
