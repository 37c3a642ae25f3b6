#pragma once

#include "model/model.h"

namespace mqf2vxb {

/// Makes the vertices relative to the pivots of their coordinates: subtracts, in the order of the
/// pivots, each one as often as its coordinate stands in the vertex's list. Without vertices
/// to write nothing is done; more subtractions than 2^26 are refused.
void applyPivots(Model& model);

}  // namespace mqf2vxb
