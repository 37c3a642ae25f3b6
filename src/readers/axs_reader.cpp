#include "readers/axs_reader.h"

#include "text/line_reader.h"
#include "text/plain_line.h"

namespace mqf2vxb {

void readPivots(Inputs& inputs, const std::string& fileName, Table<PivotRecord>& pivots) {
    constexpr std::size_t shortestLine = 2;
    LineReader reader(inputs, fileName, "@AXS970401");
    reader.requireLine("its count");
    std::int32_t pivotNum = 0;
    scanLine(reader, pivotNum);
    reader.checkCount(pivotNum, shortestLine, "pivots");
    pivots.allocate(static_cast<std::size_t>(pivotNum));
    for (PivotRecord& pivot : pivots) {
        requireFields(reader, "its last pivot", pivot.coord, pivot.x, pivot.y, pivot.z);
    }
}

}  // namespace mqf2vxb
