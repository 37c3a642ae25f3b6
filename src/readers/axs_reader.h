#pragma once

#include <string>

#include "base/table.h"
#include "files/inputs.h"
#include "model/pivot.h"

namespace mqf2vxb {

/// Reads the pivots. Their coordinates are not checked: one that no vertex lies in has no effect.
void readPivots(Inputs& inputs, const std::string& fileName, Table<PivotRecord>& pivots);

}  // namespace mqf2vxb
