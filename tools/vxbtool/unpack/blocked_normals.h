#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <set>

namespace vxbtool::unpack {

/// Normals that keep polygons from their place, by the coordinate in which they have to be named, and
/// which of them a free corner can settle. Every step costs the logarithm of their number.
class BlockedNormals {
public:
    /// Nothing but a free corner settles a hopeless normal: such a one comes first, and else the one
    /// that was added first. No normal is added twice.
    void add(std::uint32_t normal, std::uint32_t coordinate, bool hopeless) {
        const Rank rank{!hopeless, static_cast<std::uint32_t>(places_.size()), normal};
        places_.emplace(normal, Place{coordinate, rank});
        change(coordinate, [&](Coordinate& all) { all.blocked.insert(rank); });
    }

    void remove(std::uint32_t normal) {
        const auto found = places_.find(normal);
        if (found != places_.end()) {
            const Place& place = found->second;
            change(place.coordinate, [&](Coordinate& all) { all.blocked.erase(place.rank); });
        }
    }

    /// Tells whether a coordinate has free corners.
    void setFree(std::uint32_t coordinate, bool free) {
        change(coordinate, [&](Coordinate& all) { all.free = free; });
    }

    /// The one to settle next by a free corner in its coordinate.
    [[nodiscard]] std::optional<std::uint32_t> next() const {
        return heads_.empty() ? std::nullopt : std::optional(heads_.begin()->normal);
    }

private:
    struct Rank {
        bool hopeful;
        std::uint32_t number;
        std::uint32_t normal;

        // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler makes has a 0 in it
        auto operator<=>(const Rank&) const = default;
    };
    struct Place {
        std::uint32_t coordinate;
        Rank rank;
    };
    struct Coordinate {
        std::set<Rank> blocked;
        bool free = false;

        [[nodiscard]] bool hasHead() const { return free && !blocked.empty(); }
    };

    template <class Step>
    void change(std::uint32_t coordinate, Step step) {
        Coordinate& all = coordinates_[coordinate];
        if (all.hasHead()) {
            heads_.erase(*all.blocked.begin());
        }
        step(all);
        if (all.hasHead()) {
            heads_.insert(*all.blocked.begin());
        }
    }

    std::map<std::uint32_t, Place> places_;
    std::map<std::uint32_t, Coordinate> coordinates_;
    std::set<Rank> heads_;  // the first of each coordinate that has free corners
};

}  // namespace vxbtool::unpack
