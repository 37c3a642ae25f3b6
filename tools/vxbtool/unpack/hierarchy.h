#pragma once

#include "vxb/vxb_file.h"
#include "vxbtool/model_text/model_text.h"
#include "vxbtool/unpack/owners.h"

namespace vxbtool::unpack {

/// The vertices and normals of the file, the independent ones first, and without polygons.
model_text::Geometry unpackPoints(const mqf2vxb::VxbFile& file);

/// The coordinates of a file that has some, and the assignments that put each vertex into its own.
model_text::Hierarchy unpackHierarchy(const mqf2vxb::VxbFile& file, const Owners& owners);

}  // namespace vxbtool::unpack
