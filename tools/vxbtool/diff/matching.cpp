#include "vxbtool/diff/matching.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <unordered_map>

namespace vxbtool::diff {
namespace {

/// Polygons by number, those that have no partner yet.
using Open = std::vector<std::uint32_t>;

/// A key is made of hashes already.
struct KeyHash {
    template <std::size_t size>
    std::size_t operator()(const std::array<std::uint64_t, size>& key) const {
        return std::accumulate(key.begin(), key.end(), std::uint64_t{0},
                               [](std::uint64_t hash, std::uint64_t part) {
                                   return (hash ^ part) * 0x9E3779B97F4A7C15U;
                               });
    }
};

class Matcher {
public:
    Matcher(const DrawnPolygons& before, const DrawnPolygons& after)
        : before_(before),
          after_(after),
          openBefore_(before.all().size()),
          openAfter_(after.all().size()) {
        std::iota(openBefore_.begin(), openBefore_.end(), 0U);
        std::iota(openAfter_.begin(), openAfter_.end(), 0U);
    }

    Matching match() {
        Matching result;
        std::vector<PolygonPair> equal;
        pairByKey(
            [](const DrawnPolygons&, const DrawnPolygon& p) {
                return std::array{p.where, p.points, p.facing, p.colours, p.texels, p.texture};
            },
            equal);
        result.equal = equal.size();
        pairByKey([](const DrawnPolygons&, const DrawnPolygon& p) { return std::array{p.points}; },
                  result.redrawn);
        pairByCorners(result.moved);
        pairByKey(
            [](const DrawnPolygons&, const DrawnPolygon& p) {
                return std::array{p.where,
                                  p.colours,
                                  p.texels,
                                  p.texture,
                                  std::uint64_t{p.vertices[0]} << 32U | p.vertices[1],
                                  std::uint64_t{p.vertices[2]} << 32U | p.vertices[3]};
            },
            result.moved);
        pairByOrder(result.moved);
        result.removed = std::move(openBefore_);
        result.added = std::move(openAfter_);
        return result;
    }

private:
    /// Pairs open polygons of equal keys in their order.
    template <class KeyOf>
    void pairByKey(KeyOf keyOf, std::vector<PolygonPair>& pairs) {
        using Key = decltype(keyOf(before_, before_.all().front()));
        // Chains of equal keys: the first of each, and for each polygon the next.
        std::unordered_map<Key, std::uint32_t, KeyHash> first;
        std::vector<std::uint32_t> next(openBefore_.size(), none);
        first.reserve(openBefore_.size());
        for (std::size_t i = openBefore_.size(); i-- > 0;) {
            const auto [at, isNew] = first.try_emplace(
                keyOf(before_, before_.all()[openBefore_[i]]), static_cast<std::uint32_t>(i));
            if (!isNew) {
                next[i] = at->second;
                at->second = static_cast<std::uint32_t>(i);
            }
        }
        Open openAfter;
        std::vector<bool> taken(openBefore_.size());
        for (const std::uint32_t polygon : openAfter_) {
            const auto found = first.find(keyOf(after_, after_.all()[polygon]));
            if (found == first.end() || found->second == none) {
                openAfter.push_back(polygon);
                continue;
            }
            const std::uint32_t i = found->second;
            found->second = next[i];
            taken[i] = true;
            pairs.push_back({openBefore_[i], polygon});
        }
        openAfter_ = std::move(openAfter);
        keepUntaken(taken);
    }

    /// Pairs open polygons of one look of which any corner lies in the same place.
    void pairByCorners(std::vector<PolygonPair>& pairs) {
        using Key = std::array<std::uint64_t, 6>;
        std::unordered_map<Key, Open, KeyHash> withCorner;
        const auto keyOf = [](const DrawnPolygons& polygons, const DrawnPolygon& p,
                              std::uint32_t corner) {
            return Key{p.where,   p.colours, p.texels,
                       p.texture, corner,    polygons.placeOf(p, corner)};
        };
        for (std::uint32_t i = 0; i < openBefore_.size(); ++i) {
            const DrawnPolygon& polygon = before_.all()[openBefore_[i]];
            for (std::uint32_t corner = 0; corner < polygon.corners; ++corner) {
                withCorner[keyOf(before_, polygon, corner)].push_back(i);
            }
        }
        for (auto& [key, polygons] : withCorner) {
            std::reverse(polygons.begin(), polygons.end());
        }
        Open openAfter;
        std::vector<bool> taken(openBefore_.size());
        for (const std::uint32_t number : openAfter_) {
            const DrawnPolygon& polygon = after_.all()[number];
            std::uint32_t partner = none;
            for (std::uint32_t corner = 0; corner < polygon.corners && partner == none; ++corner) {
                const auto found = withCorner.find(keyOf(after_, polygon, corner));
                while (found != withCorner.end() && !found->second.empty() && partner == none) {
                    const std::uint32_t i = found->second.back();
                    found->second.pop_back();
                    partner = taken[i] ? none : i;
                }
            }
            if (partner == none) {
                openAfter.push_back(number);
                continue;
            }
            taken[partner] = true;
            pairs.push_back({openBefore_[partner], number});
        }
        openAfter_ = std::move(openAfter);
        keepUntaken(taken);
    }

    /// Where both files have as many open polygons of one look, they are the same ones, moved.
    void pairByOrder(std::vector<PolygonPair>& pairs) {
        using Key = std::array<std::uint64_t, 4>;
        std::unordered_map<Key, std::array<std::size_t, 2>, KeyHash> numbers;
        for (const std::uint32_t polygon : openBefore_) {
            ++numbers[before_.all()[polygon].look()][0];
        }
        for (const std::uint32_t polygon : openAfter_) {
            ++numbers[after_.all()[polygon].look()][1];
        }
        const auto unequal = [&](const DrawnPolygon& polygon) {
            const auto& [one, other] = numbers[polygon.look()];
            return one != other;
        };
        const auto splitOff = [&](const DrawnPolygons& polygons, Open& open) {
            const auto behind =
                std::stable_partition(open.begin(), open.end(), [&](std::uint32_t polygon) {
                    return !unequal(polygons.all()[polygon]);
                });
            Open rest(behind, open.end());
            open.erase(behind, open.end());
            return rest;
        };
        Open restBefore = splitOff(before_, openBefore_);
        Open restAfter = splitOff(after_, openAfter_);
        pairByKey([](const DrawnPolygons&, const DrawnPolygon& p) { return p.look(); }, pairs);
        openBefore_ = std::move(restBefore);
        openAfter_ = std::move(restAfter);
    }

    void keepUntaken(const std::vector<bool>& taken) {
        Open rest;
        for (std::size_t i = 0; i < taken.size(); ++i) {
            if (!taken[i]) {
                rest.push_back(openBefore_[i]);
            }
        }
        openBefore_ = std::move(rest);
    }

    static constexpr std::uint32_t none = 0xFFFFFFFFU;

    const DrawnPolygons& before_;
    const DrawnPolygons& after_;
    Open openBefore_;
    Open openAfter_;
};

}  // namespace

Matching matchPolygons(const DrawnPolygons& before, const DrawnPolygons& after) {
    return Matcher(before, after).match();
}

}  // namespace vxbtool::diff
