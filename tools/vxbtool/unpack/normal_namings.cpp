#include "vxbtool/unpack/normal_namings.h"

#include <algorithm>
#include <span>
#include <utility>

namespace vxbtool::unpack {

NormalNamings::NormalNamings(const Owners& owners, std::uint32_t independentNormals,
                             std::uint32_t sharedNormals, const UnpackedPolygons& polygons)
    : owners_(owners),
      first_(independentNormals),
      polygons_(polygons),
      target_(sharedNormals, none),
      groupOf_(polygons.polygons.size()) {
    for (std::uint32_t g = 0; g < polygons_.groups.size(); ++g) {
        const PolygonGroup& group = polygons_.groups[g];
        std::fill(groupOf_.begin() + group.first, groupOf_.begin() + group.end, g);
    }
    chooseTargets();
}

void NormalNamings::chooseTargets() {
    // Where several coordinates may own a normal, one that names it does.
    std::vector<std::vector<std::uint32_t>> namers(target_.size());
    std::vector<bool> open(target_.size());
    for (std::uint32_t n = 0; n < target_.size(); ++n) {
        const auto candidates = owners_.candidates(n);
        open[n] = candidates.size() > 1;
        target_[n] = candidates.empty() ? none : candidates.front();
    }
    for (std::uint32_t p = 0; p < polygons_.polygons.size(); ++p) {
        forLastNamings(p, [&](const Naming& naming) {
            if (open[naming.normal]) {
                namers[naming.normal].push_back(naming.coordinate);
            }
        });
    }
    std::size_t from = 0;
    std::vector<std::pair<std::uint32_t, std::size_t>> sorted;  // candidates with their places
    for (std::uint32_t n = 0; n < target_.size(); ++n) {
        const auto candidates = owners_.candidates(n);
        if (!open[n]) {
            continue;
        }
        // A normal without candidates may seem to have the place of the next one's.
        if (n == 0 || !open[n - 1] || owners_.candidates(n - 1).data() != candidates.data()) {
            from = 0;
            sorted.clear();
            for (std::size_t i = 0; i < candidates.size(); ++i) {
                sorted.emplace_back(candidates[i], i);
            }
            std::sort(sorted.begin(), sorted.end());
        }
        std::size_t next = candidates.size();
        for (const std::uint32_t namer : namers[n]) {
            const auto found =
                std::lower_bound(sorted.begin(), sorted.end(), std::pair(namer, from));
            if (found != sorted.end() && found->first == namer) {
                next = std::min(next, found->second);
            }
        }
        from = next < candidates.size() ? next : from;
        target_[n] = candidates[from];
    }
}

bool NormalNamings::hold() const {
    std::vector<bool> right(target_.size());
    std::vector<bool> marked(target_.size());
    for (const model_text::LookUse& use : polygons_.materials.uses) {
        const bool flat = polygons_.materials.looks[use.look].shading != 'G';
        forNamings(use.polygon, flat, [&](const Naming& naming) {
            right[naming.normal] = good(naming);
            marked[naming.normal] = marked[naming.normal] || shared(use.polygon);
        });
    }
    return std::ranges::find(right, false) == right.end() &&
           std::ranges::find(marked, false) == marked.end();
}

}  // namespace vxbtool::unpack
