#pragma once

#include "files/input_files.h"
#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

/// Writes the descriptors of the images by type, then all pixels, then all CLUTs. The data comes from
/// the image files.
void writeImageSection(const Model& model, const OutputLayout& layout, InputFiles& files,
                       OutputWordStream& stream);

}  // namespace mqf2vxb
