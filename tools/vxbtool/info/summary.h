#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "vxb/vxb_file.h"

namespace vxbtool {

/// The polygons of one form.
struct FormSummary {
    std::size_t polygons = 0;  ///< those of the strips counted one by one
    std::size_t strips = 0;
    std::size_t words = 0;
    /// The polygons that each coordinate draws. A body may be drawn under several coordinates, and
    /// shared polygons belong to none.
    std::map<std::uint32_t, std::size_t> byCoordinate;
};

/// A row of the coordinates' tree, in which children follow their parents.
struct TreeRow {
    std::uint32_t coordinate;
    std::uint32_t depth;  ///< 0 for a root
};

struct MotionSummary {
    std::uint32_t coordinates = 0;
    std::uint32_t steps = 0;      ///< control words
    std::uint32_t keyFrames = 0;  ///< steps that are key frames
};

/// What a file holds, counted.
struct FileSummary {
    std::array<std::size_t, mqf2vxb::sectionNum> sectionWords{};
    std::vector<TreeRow> tree;
    std::vector<std::size_t> polygonsByCoordinate;
    std::map<mqf2vxb::PrimitiveTypeCode, FormSummary> forms;
    std::size_t polygons = 0;
    /// The least and the greatest components of all vertices, each in the space of its coordinate.
    std::optional<std::array<mqf2vxb::Point, 2>> box;
    std::vector<MotionSummary> motions;
};

FileSummary summarise(const mqf2vxb::VxbFile& file);

}  // namespace vxbtool
