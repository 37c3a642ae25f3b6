#pragma once

#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

/// Writes the vertices, multiplied by `scale`, as 16-bit values: the independent ones, the shared
/// ones, and a zero slot for each of these.
void writeVertexSection(const Model& model, float scale, const OutputLayout& layout,
                        OutputWordStream& stream);
/// The same with the normals, as fixed-point values with 12 fraction bits.
void writeNormalSection(const Model& model, const OutputLayout& layout, OutputWordStream& stream);

}  // namespace mqf2vxb
