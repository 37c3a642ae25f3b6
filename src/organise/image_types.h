#pragma once

#include "base/table.h"
#include "model/image.h"

namespace mqf2vxb {

/// Sorts the images by type, types in the order of first appearance.
ImageTypes makeImageTypes(const Table<ImageRecord>& images);

}  // namespace mqf2vxb
