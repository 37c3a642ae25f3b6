#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/geometry.h"
#include "vxbtool/unpack/owners.h"
#include "vxbtool/unpack/polygons.h"

namespace vxbtool::unpack {

/// A corner that puts a shared normal into a coordinate.
struct Naming {
    std::uint32_t normal;  ///< in the shared block
    std::uint32_t coordinate;
};

/// Which corners name the shared normals, and in which coordinate each normal has to come to lie.
class NormalNamings {
public:
    static constexpr std::uint32_t none = Owners::none;

    /// `independentNormals` and `sharedNormals` are the numbers of normals.
    NormalNamings(const Owners& owners, std::uint32_t independentNormals,
                  std::uint32_t sharedNormals, const UnpackedPolygons& polygons);

    /// Coordinate of a shared normal; `none` when any will do.
    [[nodiscard]] std::uint32_t target(std::uint32_t normal) const { return target_[normal]; }
    [[nodiscard]] bool good(const Naming& naming) const {
        return target_[naming.normal] == none || naming.coordinate == target_[naming.normal];
    }
    /// Whether the uses of the materials as they stand put every normal into its coordinate.
    [[nodiscard]] bool hold() const;

    [[nodiscard]] const model_text::Look& look(std::uint32_t polygon) const {
        return polygons_.materials.looks[polygons_.materials.uses[polygon].look];
    }
    [[nodiscard]] std::uint32_t groupOf(std::uint32_t polygon) const { return groupOf_[polygon]; }
    [[nodiscard]] bool shared(std::uint32_t polygon) const {
        return polygons_.groups[groupOf_[polygon]].shared;
    }
    [[nodiscard]] std::size_t corners(std::uint32_t polygon) const {
        return mqf2vxb::vertexCount(static_cast<std::int32_t>(polygons_.polygons[polygon].shape));
    }
    /// Calls `use(naming)` for the corners of a polygon that name shared normals, in their order.
    template <class Use>
    void forNamings(std::uint32_t polygon, bool flat, Use use) const {
        const model_text::Polygon& record = polygons_.polygons[polygon];
        const std::size_t number = flat && !shared(polygon) ? 1 : corners(polygon);
        for (std::size_t k = 0; k < number; ++k) {
            const std::uint32_t normal = record.normals[flat ? 0 : k];
            if (normal >= first_ && normal - first_ < target_.size()) {
                use(Naming{normal - first_, owners_.coordinateOf(record.vertices[k])});
            }
        }
    }
    /// The same for what counts of them: of several corners with one normal the last.
    template <class Use>
    void forLastNamings(std::uint32_t polygon, Use use) const {
        std::array<Naming, 4> namings{};
        std::size_t number = 0;
        forNamings(polygon, look(polygon).shading != 'G',
                   [&](const Naming& naming) { namings[number++] = naming; });
        for (std::size_t i = 0; i < number; ++i) {
            const bool again =
                std::any_of(namings.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                            namings.begin() + static_cast<std::ptrdiff_t>(number),
                            [&](const Naming& later) { return later.normal == namings[i].normal; });
            if (!again) {
                use(namings[i]);
            }
        }
    }

private:
    void chooseTargets();

    const Owners& owners_;
    std::uint32_t first_;  // shared normal
    const UnpackedPolygons& polygons_;
    std::vector<std::uint32_t> target_;
    std::vector<std::uint32_t> groupOf_;  // by polygon
};

}  // namespace vxbtool::unpack
