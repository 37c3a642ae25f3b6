#pragma once

#include "vxbtool/import/nodes.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/import/textures.h"

namespace vxbtool::importing {

/// Cuts polygons that reach beyond a picture whose edge goes on there, along the edges: what lies beyond
/// has one line of texels. Their texture coordinates are those of the source yet.
void cutAtClampedEdges(const Materials& materials, const PlacedCoordinates& placed, Shape& shape,
                       Dropped& dropped);

/// Cuts polygons whose picture repeats more often than a packet can tell, along the edges of the
/// pictures. One that would become very many becomes plain instead.
void cutAtSeams(const Textures& textures, const PlacedCoordinates& placed, Shape& shape,
                Dropped& dropped);

}  // namespace vxbtool::importing
