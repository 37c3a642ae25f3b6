#pragma once

#include "files/output_word_stream.h"
#include "model/model.h"
#include "writers/output_layout.h"

namespace mqf2vxb {

/// Writes the animated coordinates of every motion, the key-frame types, the control words of the
/// sequence steps and the key frames.
void writeAnimationSection(const Model& model, const OutputLayout& layout,
                           OutputWordStream& stream);

}  // namespace mqf2vxb
