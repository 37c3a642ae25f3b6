#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

namespace vxbtool::importing {

/// A point of whole numbers under a coordinate.
struct WholePoint {
    std::uint32_t coordinate = 0;
    std::array<std::int32_t, 3> at{};

    bool operator==(const WholePoint&) const = default;
};

/// Points, equal ones once.
class PointTable {
public:
    /// The number of a point until order() is called.
    std::uint32_t add(const WholePoint& point);

    /// Brings the points into the order of their coordinates, and under one coordinate into that in
    /// which they came. Returns the new number of each.
    std::vector<std::uint32_t> order();

    [[nodiscard]] const std::vector<WholePoint>& points() const { return points_; }

private:
    struct Hash {
        std::size_t operator()(const WholePoint& point) const;
    };

    std::vector<WholePoint> points_;
    std::unordered_map<WholePoint, std::uint32_t, Hash> numbers_;
};

}  // namespace vxbtool::importing
