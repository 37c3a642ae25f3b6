#pragma once

#include <vector>

#include "vxbtool/unpack/owners.h"
#include "vxbtool/unpack/polygons.h"

namespace vxbtool::unpack {

/// Puts the uses of the materials into an order in which every shared normal comes to lie in its
/// coordinate again: in that of the last corner that names it. Groups keep their order. Where what the packets
/// name does not suffice, unlit polygons, whose packets carry no normals, name some. `shared` and
/// `independent` are the numbers of normals.
void orderForNormals(const Owners& owners, std::uint32_t independentNormals,
                     std::uint32_t sharedNormals, UnpackedPolygons& polygons);

}  // namespace vxbtool::unpack
