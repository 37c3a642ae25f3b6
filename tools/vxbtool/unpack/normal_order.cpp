#include "vxbtool/unpack/normal_order.h"

#include <algorithm>
#include <array>
#include <deque>
#include <iterator>
#include <limits>
#include <map>
#include <optional>

#include "model/material.h"
#include "vxbtool/unpack/blocked_normals.h"
#include "vxbtool/unpack/normal_namings.h"

namespace vxbtool::unpack {
namespace {

constexpr std::uint32_t none = NormalNamings::none;

/// A corner of an unlit polygon, free to name a normal.
struct Slot {
    std::uint32_t polygon;
    std::uint8_t corner;
};

class NormalOrder {
public:
    /// `sharedLast` is whether the shared polygons rather come behind the others.
    NormalOrder(const Owners& owners, std::uint32_t independentNormals, std::uint32_t sharedNormals,
                bool sharedLast, UnpackedPolygons& polygons)
        : sharedLast_(sharedLast),
          owners_(owners),
          first_(independentNormals),
          polygons_(polygons),
          uses_(polygons.materials.uses),
          namings_(owners, independentNormals, sharedNormals, polygons),
          marked_(sharedNormals),
          settled_(sharedNormals),
          settledAt_(sharedNormals),
          goodLeft_(sharedNormals) {
        for (std::uint32_t p = 0; p < uses_.size(); ++p) {
            namings_.forLastNamings(p, [&](const Naming& naming) {
                marked_[naming.normal] = marked_[naming.normal] || namings_.shared(p);
            });
        }
    }

    /// True when every shared normal comes to lie in its coordinate.
    bool order() {
        if (namings_.hold()) {
            return true;
        }
        placeAll();
        settleRest();
        std::vector<model_text::LookUse> ordered;
        ordered.reserve(uses_.size());
        std::transform(placed_.rbegin(), placed_.rend(), std::back_inserter(ordered),
                       [&](std::uint32_t polygon) { return uses_[polygon]; });
        uses_ = std::move(ordered);
        return namings_.hold();
    }

private:
    [[nodiscard]] bool isFree(std::uint32_t polygon) const {
        return (namings_.look(polygon).flag & mqf2vxb::material_flag::unlit) != 0 &&
               polygons_.polygons[polygon].normals[0] == polygons_.noNormal;
    }

    // The order is made from its end: a polygon can stand there if each normal that it names is
    // settled by one behind it, or by itself. What can be placed stays so, and the free corners of
    // unlit polygons help when nothing else can.

    void placeAll() {
        polygonsLeft_.resize(polygons_.groups.size());
        behind_.assign(polygons_.groups.size(), {});
        before_.assign(polygons_.groups.size(), {});
        waiting_.resize(settled_.size());
        done_.resize(uses_.size());
        placedAt_.resize(uses_.size());
        for (std::uint32_t g = 0; g < polygons_.groups.size(); ++g) {
            polygonsLeft_[g] = polygons_.groups[g].end - polygons_.groups[g].first;
        }
        chainGroups();
        for (std::uint32_t p = 0; p < uses_.size(); ++p) {
            namings_.forLastNamings(p, [&](const Naming& naming) {
                goodLeft_[naming.normal] += namings_.good(naming) ? 1 : 0;
            });
        }
        for (const PolygonGroup& group : polygons_.groups) {
            if (group.first == group.end) {
                continue;
            }
            if (group.strips) {
                for (std::uint32_t p = group.first; p < group.end; ++p) {
                    addReady(p);
                }
            } else {
                addReady(group.end - 1);
            }
        }
        drain();
        while (placed_.size() < uses_.size()) {
            if (!help()) {
                placeAnyway();
            }
            drain();
        }
    }

    /// The bodies stand in the order of their first polygons, and so do the groups of one body.
    void chainGroups() {
        const auto chain = [&](std::uint32_t group, std::uint32_t next) {
            behind_[group].push_back(next);
            before_[next].push_back(group);
        };
        std::uint32_t firstOfBody = none;
        for (std::uint32_t g = 0; g < polygons_.groups.size(); ++g) {
            if (firstOfBody != none &&
                polygons_.groups[g].shared == polygons_.groups[g - 1].shared &&
                (polygons_.groups[g].shared ||
                 owners_.listOfGroup(g) == owners_.listOfGroup(g - 1))) {
                chain(g - 1, g);
                continue;
            }
            if (firstOfBody != none && !polygons_.groups[g].shared) {
                chain(firstOfBody, g);
            }
            firstOfBody = g;
        }
    }

    void addReady(std::uint32_t polygon) {
        ready_[namings_.shared(polygon) ? 1 : 0].push_back(polygon);
    }

    void drain() {
        while (!ready_[0].empty() || !ready_[1].empty()) {
            auto& rather = ready_[sharedLast_ ? 1 : 0];
            auto& ready = rather.empty() ? ready_[sharedLast_ ? 0 : 1] : rather;
            const std::uint32_t polygon = ready.back();
            ready.pop_back();
            tryPlace(polygon);
        }
    }

    /// Whether the group order keeps this polygon from its place: in a model without meshes the
    /// bodies and their groups stand in the order of their first polygons.
    [[nodiscard]] bool heldByOrder(std::uint32_t polygon) const {
        const std::uint32_t g = namings_.groupOf(polygon);
        return !polygons_.hasStrips && polygon == polygons_.groups[g].first &&
               std::ranges::any_of(behind_[g],
                                   [&](std::uint32_t next) { return polygonsLeft_[next] > 0; });
    }

    void tryPlace(std::uint32_t polygon) {
        if (done_[polygon] || heldByOrder(polygon)) {
            return;  // the group behind brings back what it holds
        }
        std::uint32_t blocker = none;
        namings_.forLastNamings(polygon, [&](const Naming& naming) {
            if (!settled_[naming.normal] && !namings_.good(naming)) {
                blocker = naming.normal;
            }
        });
        if (blocker != none) {
            if (waiting_[blocker].empty()) {
                blocked_.push_back(blocker);
                if (namings_.target(blocker) != none) {
                    // A polygon that names it rightly settles it, so this does not change before.
                    helpable_.add(blocker, namings_.target(blocker), goodLeft_[blocker] == 0);
                }
            }
            waiting_[blocker].push_back(polygon);
            return;
        }
        place(polygon);
    }

    void place(std::uint32_t polygon) {
        placed_.push_back(polygon);
        placedAt_[polygon] = placed_.size();
        done_[polygon] = true;
        const std::uint32_t g = namings_.groupOf(polygon);
        const PolygonGroup& group = polygons_.groups[g];
        --polygonsLeft_[g];
        if (!group.strips && polygon > group.first) {
            addReady(polygon - 1);
        }
        if (polygonsLeft_[g] == 0 && !polygons_.hasStrips) {
            for (const std::uint32_t previous : before_[g]) {
                if (polygonsLeft_[previous] == 1) {
                    addReady(polygons_.groups[previous].first);
                }
            }
        }
        if (isFree(polygon)) {
            for (std::size_t k = 0; k < namings_.corners(polygon); ++k) {
                const std::uint32_t coordinate =
                    owners_.coordinateOf(polygons_.polygons[polygon].vertices[k]);
                slots_[namings_.shared(polygon) ? 1 : 0][coordinate].push_back(
                    {polygon, static_cast<std::uint8_t>(k)});
                helpable_.setFree(coordinate, true);
            }
        }
        namings_.forLastNamings(polygon, [&](const Naming& naming) {
            goodLeft_[naming.normal] -= namings_.good(naming) ? 1 : 0;
            settle(naming.normal, placed_.size());
        });
    }

    void settle(std::uint32_t normal, std::size_t at) {
        if (settled_[normal]) {
            return;
        }
        settled_[normal] = true;
        settledAt_[normal] = at;
        helpable_.remove(normal);
        std::vector<std::uint32_t> freed;
        freed.swap(waiting_[normal]);
        for (const std::uint32_t polygon : freed) {
            addReady(polygon);
        }
    }

    /// Lets a free corner in this coordinate name the normal.
    bool takeSlot(std::uint32_t normal, std::uint32_t coordinate, bool ofShared) {
        auto& slots = slots_[ofShared ? 1 : 0];
        const auto found = slots.find(coordinate);
        if (found == slots.end() || found->second.empty()) {
            return false;
        }
        // The last one in the order leaves most of them in front of it.
        const Slot slot = found->second.front();
        found->second.pop_front();
        const auto others = slots_[ofShared ? 0 : 1].find(coordinate);
        helpable_.setFree(
            coordinate, !found->second.empty() ||
                            (others != slots_[ofShared ? 0 : 1].end() && !others->second.empty()));
        useSlot(slot, normal, ofShared);
        settle(normal, placedAt_[slot.polygon]);
        return true;
    }

    void useSlot(const Slot& slot, std::uint32_t normal, bool ofShared) {
        polygons_.polygons[slot.polygon].normals[slot.corner] = first_ + normal;
        makeSmooth(slot.polygon);
        marked_[normal] = marked_[normal] || ofShared;
    }

    /// Only a smooth polygon names a normal for each corner.
    void makeSmooth(std::uint32_t polygon) {
        std::uint32_t& use = uses_[polygon].look;
        if (namings_.look(polygon).shading == 'G') {
            return;
        }
        const auto [place, isNew] = smoothLooks_.try_emplace(use, 0);
        if (isNew) {
            model_text::Look smooth = namings_.look(polygon);
            smooth.shading = 'G';
            polygons_.materials.looks.push_back(smooth);
            place->second = static_cast<std::uint32_t>(polygons_.materials.looks.size() - 1);
        }
        use = place->second;
    }

    bool settleBySlot(std::uint32_t normal) {
        if (namings_.target(normal) == none) {
            return false;
        }
        const bool sharedFirst = !marked_[normal];
        return takeSlot(normal, namings_.target(normal), sharedFirst) ||
               takeSlot(normal, namings_.target(normal), !sharedFirst);
    }

    /// Settles a blocked normal by a free corner: one first that nothing else can settle.
    bool help() {
        const std::optional<std::uint32_t> normal = helpable_.next();
        return normal && settleBySlot(*normal);
    }

    /// No order settles all: the rest goes on as if a blocked normal were right.
    void placeAnyway() {
        while (!blocked_.empty() && settled_[blocked_.back()]) {
            blocked_.pop_back();
        }
        if (!blocked_.empty()) {
            settle(blocked_.back(), placed_.size());
        }
    }

    void settleRest() {
        for (std::uint32_t n = 0; n < settled_.size(); ++n) {
            if (!settled_[n]) {
                settleBySlot(n);
            }
        }
        for (std::uint32_t n = 0; n < settled_.size(); ++n) {
            if (!marked_[n] && !takeSlot(n, namings_.target(n), true)) {
                markAnywhere(n);
            }
        }
    }

    /// Lets a shared polygon name the normal in any coordinate, before what settles it does: where that
    /// leaves the later ones to other normals.
    void markAnywhere(std::uint32_t normal) {
        if (!lastSlotsKnown_) {
            lastSlotsKnown_ = true;
            for (const auto& [coordinate, slots] : slots_[1]) {
                addLastSlot(coordinate, slots);
            }
        }
        while (true) {
            const auto found = lastSlots_.upper_bound(settledAt_[normal]);
            if (found == lastSlots_.end()) {
                return;
            }
            const auto [place, coordinate] = *found;
            lastSlots_.erase(found);
            std::deque<Slot>& slots = slots_[1].at(coordinate);
            const bool isStill = !slots.empty() && placedAt_[slots.back().polygon] == place;
            if (isStill) {
                const Slot slot = slots.back();
                slots.pop_back();
                useSlot(slot, normal, true);
            }
            addLastSlot(coordinate, slots);
            if (isStill) {
                return;
            }
        }
    }

    void addLastSlot(std::uint32_t coordinate, const std::deque<Slot>& slots) {
        if (!slots.empty()) {
            lastSlots_.emplace(placedAt_[slots.back().polygon], coordinate);
        }
    }

    bool sharedLast_;
    const Owners& owners_;
    std::uint32_t first_;  // shared normal
    UnpackedPolygons& polygons_;
    std::vector<model_text::LookUse>& uses_;
    NormalNamings namings_;
    std::vector<bool> marked_;  // a shared polygon names it
    std::vector<bool> settled_;
    std::vector<std::size_t> settledAt_;   // how many polygons were placed then
    std::vector<std::uint32_t> goodLeft_;  // unplaced polygons that name it in its coordinate

    std::vector<std::uint32_t> placed_;                // from the end of the order
    std::vector<std::size_t> placedAt_;                // by polygon
    std::vector<bool> done_;                           // by polygon: it is placed
    std::array<std::vector<std::uint32_t>, 2> ready_;  // independent ones, shared ones
    std::vector<std::vector<std::uint32_t>> waiting_;  // polygons by the normal that blocks them
    std::vector<std::uint32_t> blocked_;
    BlockedNormals helpable_;
    // Coordinates by the place of their last slot of a shared polygon, which may have gone since.
    std::multimap<std::size_t, std::uint32_t> lastSlots_;
    bool lastSlotsKnown_ = false;
    std::vector<std::uint32_t> polygonsLeft_;         // by group
    std::vector<std::vector<std::uint32_t>> behind_;  // groups that begin behind each group
    std::vector<std::vector<std::uint32_t>> before_;
    std::array<std::map<std::uint32_t, std::deque<Slot>>, 2> slots_;  // of independent, of shared
    std::map<std::uint32_t, std::uint32_t> smoothLooks_;
};

}  // namespace

void orderForNormals(const Owners& owners, std::uint32_t independentNormals,
                     std::uint32_t sharedNormals, UnpackedPolygons& polygons) {
    if (sharedNormals == 0) {
        return;
    }
    const UnpackedPolygons asFound = polygons;
    for (const bool sharedLast : {false, true}) {
        polygons = asFound;
        if (NormalOrder(owners, independentNormals, sharedNormals, sharedLast, polygons).order()) {
            return;
        }
    }
}

}  // namespace vxbtool::unpack
