#pragma once

#include "vxb/vxb_file.h"
#include "vxbtool/diff/changes.h"

namespace vxbtool::diff {

// What two files say differently, one function for each subject. Time is near-linear in the files.

/// By number: a coordinate is what has this number in both files.
void compareCoordinates(const mqf2vxb::VxbFile& before, const mqf2vxb::VxbFile& after,
                        Changes& changes);
/// The polygons by what they are, whatever their order, and the vertices and normals that they use.
void comparePolygons(const mqf2vxb::VxbFile& before, const mqf2vxb::VxbFile& after,
                     Changes& changes);
/// By number.
void compareMotions(const mqf2vxb::VxbFile& before, const mqf2vxb::VxbFile& after,
                    Changes& changes);
/// By what they are, then by their positions, then by their order.
void compareImages(const mqf2vxb::VxbFile& before, const mqf2vxb::VxbFile& after, Changes& changes);

}  // namespace vxbtool::diff
