#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/table.h"

namespace mqf2vxb {

/// One node of the hierarchy, as the FRM file gives it.
struct CoordinateRecord {
    bool hasObjects = false;  ///< an assignment line names this coordinate
    Table<std::string> objectName{"Coordinate's Object Name Data Base"};  ///< group form only
    std::array<std::int16_t, 9> matrix{};                                 ///< row by row
    std::array<std::int32_t, 3> translation{};
    std::array<std::int16_t, 3> extra{};
    std::int32_t parent = 0;  ///< its own index for a root
};

}  // namespace mqf2vxb
