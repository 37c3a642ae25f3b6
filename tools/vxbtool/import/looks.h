#pragma once

#include <cstdint>
#include <vector>

#include "vxbtool/import/materials.h"
#include "vxbtool/import/shape.h"
#include "vxbtool/import/textures.h"
#include "vxbtool/model_text/model_text.h"

namespace vxbtool::importing {

/// Makes the SRF lines of polygons: the kind that holds what a material and the corners' colours say,
/// the fewest flags.
class LookMaker {
public:
    LookMaker(const Materials& materials, const Textures& textures, const Shape& shape)
        : materials_(materials), textures_(textures), shape_(shape) {}

    /// Whether the polygon needs normals.
    [[nodiscard]] bool lit(const ShapePolygon& polygon) const;
    /// Adds the look of the polygon and returns its number; that of the one before where it is the
    /// same.
    std::uint32_t add(const ShapePolygon& polygon, char shading, model_text::Materials& looks);

private:
    /// What a look has besides its flag and shading.
    struct LookNumbers {
        char kind = 'C';
        std::vector<std::int32_t> numbers;
    };

    [[nodiscard]] LookNumbers plain(const ShapePolygon& polygon) const;
    [[nodiscard]] LookNumbers textured(const ShapePolygon& polygon) const;
    [[nodiscard]] std::uint32_t flagOf(const ShapePolygon& polygon) const;

    const Materials& materials_;
    const Textures& textures_;
    const Shape& shape_;
};

}  // namespace vxbtool::importing
