#include "vxbtool/import/point_table.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

#include "base/seeded_hash.h"

namespace vxbtool::importing {

std::size_t PointTable::Hash::operator()(const WholePoint& point) const {
    const std::array<std::uint32_t, 4> words{
        point.coordinate, static_cast<std::uint32_t>(point.at[0]),
        static_cast<std::uint32_t>(point.at[1]), static_cast<std::uint32_t>(point.at[2])};
    std::array<char, sizeof words> bytes{};
    std::memcpy(bytes.data(), words.data(), bytes.size());
    return mqf2vxb::SeededHash()({bytes.data(), bytes.size()});
}

std::uint32_t PointTable::add(const WholePoint& point) {
    const auto [at, isNew] =
        numbers_.try_emplace(point, static_cast<std::uint32_t>(points_.size()));
    if (isNew) {
        points_.push_back(point);
    }
    return at->second;
}

std::vector<std::uint32_t> PointTable::order() {
    std::vector<std::uint32_t> sorted(points_.size());
    std::iota(sorted.begin(), sorted.end(), 0U);
    std::ranges::stable_sort(sorted, {},
                             [&](std::uint32_t number) { return points_[number].coordinate; });
    std::vector<std::uint32_t> renumbered(points_.size());
    std::vector<WholePoint> points;
    points.reserve(points_.size());
    for (const std::uint32_t number : sorted) {
        renumbered[number] = static_cast<std::uint32_t>(points.size());
        points.push_back(points_[number]);
    }
    points_ = std::move(points);
    numbers_.clear();
    return renumbered;
}

}  // namespace vxbtool::importing
