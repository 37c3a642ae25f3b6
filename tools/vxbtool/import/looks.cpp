#include "vxbtool/import/looks.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <vector>

#include "model/material.h"
#include "vxbtool/import/texture_coordinates.h"

namespace vxbtool::importing {
namespace {

constexpr float fullColour = 255;
constexpr float plainTexture = 128;  // of a colour that leaves a texture as it is

using Colour = std::array<float, 3>;

Colour times(const Colour& a, const Colour& b) { return {a[0] * b[0], a[1] * b[1], a[2] * b[2]}; }

void append(const Colour& colour, float full, std::vector<std::int32_t>& numbers) {
    for (const float value : colour) {
        numbers.push_back(
            static_cast<std::int32_t>(std::lround(std::clamp(value * full, 0.0F, fullColour))));
    }
}

/// The colours of the corners times that of the material: one where they are all the same.
std::vector<Colour> coloursOf(const ShapePolygon& polygon, const Colour& colour) {
    std::vector<Colour> colours;
    for (const ShapeCorner& corner : polygon.used()) {
        colours.push_back(times({corner.colour[0], corner.colour[1], corner.colour[2]}, colour));
    }
    const bool one =
        std::ranges::all_of(colours, [&](const Colour& other) { return other == colours.front(); });
    colours.resize(one ? 1 : colours.size());
    return colours;
}

/// Four corners' worth, also for triangles.
void append(const std::vector<Colour>& colours, float full, std::vector<std::int32_t>& numbers) {
    for (const Colour& colour : colours) {
        append(colour, full, numbers);
    }
    if (colours.size() == 3) {
        append(Colour{}, full, numbers);
    }
}

bool equal(const model_text::Materials& looks, const model_text::Look& look,
           std::span<const std::int32_t> numbers) {
    const model_text::Look& last = looks.looks.back();
    return last.flag == look.flag && last.shading == look.shading && last.kind == look.kind &&
           std::ranges::equal(std::span(looks.numbers).subspan(last.firstNumber), numbers);
}

}  // namespace

bool LookMaker::lit(const ShapePolygon& polygon) const {
    return !materials_.materials[shape_.parts[polygon.part].material].unlit;
}

LookMaker::LookNumbers LookMaker::plain(const ShapePolygon& polygon) const {
    const Part& part = shape_.parts[polygon.part];
    const SurfaceMaterial& material = materials_.materials[part.material];
    const Textures::OfMaterial& texture = textures_.materials[part.material];
    Colour base = part.coloured && material.assumed ? Colour{1, 1, 1} : material.colour;
    if (polygon.plain) {
        base = texture.tinted ? texture.mean : times(texture.mean, material.colour);
    }
    const std::vector<Colour> colours = coloursOf(polygon, base);
    LookNumbers look;
    look.kind = colours.size() == 1 ? 'C' : 'G';
    append(colours, fullColour, look.numbers);
    return look;
}

LookMaker::LookNumbers LookMaker::textured(const ShapePolygon& polygon) const {
    const Part& part = shape_.parts[polygon.part];
    const SurfaceMaterial& material = materials_.materials[part.material];
    const Textures::OfMaterial& texture = textures_.materials[part.material];
    const pictures::PlacedTexture& placed = textures_.placing.textures[*texture.placed];
    const bool window = repeats(polygon);
    LookNumbers look;
    look.numbers.push_back(static_cast<std::int32_t>(*texture.placed));
    if (window) {
        look.numbers.insert(look.numbers.end(), {static_cast<std::int32_t>(placed.width),
                                                 static_cast<std::int32_t>(placed.height), 0, 0});
    }
    const auto texels = texelsOf(polygon, placed, window);
    look.numbers.insert(look.numbers.end(), texels.begin(), texels.end());
    // The picture of a lit surface has its material's colour already, unless corners have one.
    constexpr Colour white{1, 1, 1};
    std::vector<Colour> colours = coloursOf(polygon, texture.tinted ? white : material.colour);
    if (colours.size() == 1 && colours.front() == white) {
        look.kind = window ? 'W' : 'T';
    } else if (colours.size() == 1 && material.unlit) {
        look.kind = window ? 'S' : 'D';
        append(colours, plainTexture, look.numbers);
    } else {
        look.kind = window ? 'N' : 'H';
        colours.resize(polygon.cornerNum, colours.front());
        append(colours, plainTexture, look.numbers);
    }
    return look;
}

std::uint32_t LookMaker::flagOf(const ShapePolygon& polygon) const {
    const Part& part = shape_.parts[polygon.part];
    const SurfaceMaterial& material = materials_.materials[part.material];
    const bool translucentCorner =
        material.mayBlend && part.coloured &&
        std::ranges::any_of(polygon.used(), [](const auto& c) { return c.colour[3] < 1; });
    const bool blended =
        material.opacity < 1 || textures_.materials[part.material].translucent || translucentCorner;
    return (blended ? mqf2vxb::material_flag::bit04 : 0) |
           (material.unlit ? mqf2vxb::material_flag::unlit : 0);
}

std::uint32_t LookMaker::add(const ShapePolygon& polygon, char shading,
                             model_text::Materials& looks) {
    const Part& part = shape_.parts[polygon.part];
    const bool hasTexture =
        part.textured && textures_.materials[part.material].placed && !polygon.plain;
    const LookNumbers made = hasTexture ? textured(polygon) : plain(polygon);
    model_text::Look look;
    look.flag = flagOf(polygon);
    look.shading = lit(polygon) ? shading : 'F';
    look.kind = made.kind;
    if (!looks.looks.empty() && equal(looks, look, made.numbers)) {
        return static_cast<std::uint32_t>(looks.looks.size() - 1);
    }
    return looks.add(look.flag, look.shading, look.kind, made.numbers);
}

}  // namespace vxbtool::importing
