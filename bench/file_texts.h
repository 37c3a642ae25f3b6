#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "text.h"

namespace bench {

struct Polygon {
    bool quadrangle = false;
    std::array<std::int32_t, 4> corners{};  // vertices, and normals too
};

/// What decides a polygon's type code.
struct Look {
    std::uint32_t flag;
    char shading;
    char kind;
};

/// Polygons that follow each other and take their looks from one palette.
struct Run {
    std::int32_t first;
    std::int32_t number;
    std::span<const Look> palette;
};

/// Most polygons have a line of their own; the others share one with those behind them.
std::string makeSrf(Random& random, std::span<const Run> runs, std::int32_t textures);

/// A normal for every vertex.
std::string makeGeo(Random& random, std::int32_t points, std::span<const Polygon> polygons);

/// `each` vertices in every coordinate; the last `overlap` of them also in the next one.
std::string makeFrm(Random& random, std::int32_t coordinates, std::int32_t each,
                    std::int32_t overlap);

/// An image at the top left corner of a texture page: 4-bit pixels of 2 KiB, or of 64 KiB either
/// 8-bit pixels with a colour table or 16-bit ones without.
std::string makePxl(Random& random, std::uint32_t number, bool large);

/// A motion of `stepNum` labelled steps over all `coordinates`.
std::string makeClp(Random& random, std::int32_t coordinates, std::int32_t stepNum,
                    std::int32_t eighths);

}  // namespace bench
