#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Gives every material its type code and its coordinate list: the list of the polygon's first
/// vertex, or `shared` when the first coordinates of its vertices differ.
void organisePolygons(Model& model);

/// Gives the normals their coordinate lists, marks the vertices and normals of shared polygons
/// and counts these polygons.
void assignNormalCoordinates(Model& model);

}  // namespace mqf2vxb
