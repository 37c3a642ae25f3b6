#pragma once

#include <vector>

#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::unpack {

/// The motions of a file. Their steps and key frames stand together in the file: which belong to
/// which motion is told by the labels and ends, as far as it is told.
std::vector<model_text::Motion> unpackMotions(const mqf2vxb::VxbFile& file);

}  // namespace vxbtool::unpack
