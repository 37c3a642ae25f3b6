#pragma once

#include <string_view>

#include "vxb/vxb_file.h"

namespace mqf2vxb {

/// Decodes the bytes of a VXB file and checks everything that its words say about each other. Takes
/// any bytes at all: what is wrong is in the file's findings, in file order. Time and memory are
/// linear in the length.
///
/// The sections of a VXB file follow each other without a gap. The reader walks them from front to
/// back and compares every offset on its way with the place that it has come to; where the two
/// differ, the words around them tell which is wrong, and reading goes on from the other.
VxbFile readVxb(std::string_view bytes);

}  // namespace mqf2vxb
