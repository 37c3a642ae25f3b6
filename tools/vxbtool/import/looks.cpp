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

std::uint32_t LookMaker::add(const ShapePolygon& polygon, char shading,
                             model_text::Materials& looks) {
    const Part& part = shape_.parts[polygon.part];
    const SurfaceMaterial& material = materials_.materials[part.material];
    const Textures::OfMaterial& texture = textures_.materials[part.material];
    const bool textured = part.textured && texture.placed && !polygon.plain;

    model_text::Look look;
    look.shading = material.unlit ? 'F' : shading;
    const bool translucentCorner =
        material.mayBlend && part.coloured &&
        std::ranges::any_of(polygon.used(), [](const auto& c) { return c.colour[3] < 1; });
    if (material.opacity < 1 || texture.translucent || translucentCorner) {
        look.flag |= mqf2vxb::material_flag::bit04;
    }
    if (material.unlit) {
        look.flag |= mqf2vxb::material_flag::unlit;
    }

    std::vector<std::int32_t> numbers;
    if (!textured) {
        const bool meanKnown = polygon.plain && part.textured && texture.placed;
        const Colour base =
            meanKnown ? texture.tinted ? texture.mean : times(texture.mean, material.colour)
                      : material.colour;
        const std::vector<Colour> colours = coloursOf(polygon, base);
        look.kind = colours.size() == 1 ? 'C' : 'G';
        append(colours, fullColour, numbers);
    } else {
        const pictures::PlacedTexture& placed = textures_.placing.textures[*texture.placed];
        const bool window = repeats(polygon);
        numbers.push_back(static_cast<std::int32_t>(*texture.placed));
        if (window) {
            numbers.insert(numbers.end(), {static_cast<std::int32_t>(placed.width),
                                           static_cast<std::int32_t>(placed.height), 0, 0});
        }
        const auto texels = texelsOf(polygon, placed, window);
        numbers.insert(numbers.end(), texels.begin(), texels.end());
        // The picture of a lit surface has its material's colour already, unless corners have one.
        const Colour base = texture.tinted ? Colour{1, 1, 1} : material.colour;
        std::vector<Colour> colours = coloursOf(polygon, base);
        const bool white = colours.size() == 1 && colours.front() == Colour{1, 1, 1};
        if (white) {
            look.kind = window ? 'W' : 'T';
        } else if (colours.size() == 1 && material.unlit) {
            look.kind = window ? 'S' : 'D';
            append(colours, plainTexture, numbers);
        } else {
            look.kind = window ? 'N' : 'H';
            colours.resize(polygon.cornerNum, colours.front());
            append(colours, plainTexture, numbers);
        }
    }
    if (!looks.looks.empty() && equal(looks, look, numbers)) {
        return static_cast<std::uint32_t>(looks.looks.size() - 1);
    }
    return looks.add(look.flag, look.shading, look.kind, numbers);
}

}  // namespace vxbtool::importing
