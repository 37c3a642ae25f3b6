#pragma once

#include <cstdint>

namespace mqf2vxb {

/// The origin of one coordinate, in the units of the GEO file. A coordinate may have several.
struct PivotRecord {
    std::int32_t coord = 0;
    float x = 0;
    float y = 0;
    float z = 0;
};

}  // namespace mqf2vxb
