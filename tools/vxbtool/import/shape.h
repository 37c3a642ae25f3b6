#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "vxbtool/import/coordinate_map.h"

namespace vxbtool::importing {

using Vector3f = std::array<float, 3>;

/// A spot of the surface, in its coordinate's space and in units, not yet rounded.
struct Place {
    std::uint32_t coordinate = 0;
    Vector point;
    bool mirrors = false;  ///< the way from the source's mesh into the coordinate's space does
};

struct ShapeCorner {
    std::uint32_t place = 0;         ///< index into Shape::places
    Vector3f normal{};               ///< in the space of the place's coordinate, of length 1
    std::array<float, 2> texture{};  ///< 0 to 1 from left to right and from the top down
    std::array<float, 4> colour{1, 1, 1, 1};
};

/// A triangle, or a flat quadrangle whose corners run like a strip; clockwise as seen from its front, in
/// the space of its first corner's coordinate.
struct ShapePolygon {
    std::uint32_t part = 0;  ///< index into Shape::parts
    std::uint8_t cornerNum = 3;
    bool mirrored = false;  ///< the first corner's space mirrors the source's mesh
    bool plain = false;     ///< it shows the mean colour of its picture in its place
    std::array<ShapeCorner, 4> corners{};

    [[nodiscard]] std::span<ShapeCorner> used() { return std::span(corners).first(cornerNum); }
    [[nodiscard]] std::span<const ShapeCorner> used() const {
        return std::span(corners).first(cornerNum);
    }
};

/// The polygons of one mesh under one node.
struct Part {
    const aiMesh* mesh = nullptr;
    std::uint32_t coordinate = 0;  ///< that of the node
    std::uint32_t material = 0;    ///< index into the scene's
    bool textured = false;         ///< its corners have texture coordinates
    bool coloured = false;         ///< its corners have colours
};

/// A surface on its way into a model.
struct Shape {
    std::vector<Part> parts;
    std::vector<Place> places;
    std::vector<ShapePolygon> polygons;  ///< those of a part together, in the order of the parts
};

/// What was left out or changed on the way, for the report.
struct Dropped {
    std::size_t lines = 0;            ///< lines and points
    std::size_t areaLess = 0;         ///< polygons without an area
    std::size_t notFinite = 0;        ///< polygons with a corner that is no number
    std::size_t cutPolygons = 0;      ///< of more than four corners, or bent, that became triangles
    std::size_t fans = 0;             ///< whose outline is too intricate for the cut to be exact
    std::size_t simplified = 0;       ///< triangles that --triangles took away
    std::size_t seamPolygons = 0;     ///< polygons that were cut where their texture repeats
    std::size_t clampedPolygons = 0;  ///< cut where a clamped texture ends
    std::size_t tooFine = 0;          ///< polygons that show their texture's mean colour instead
    std::size_t morphTargets = 0;
    std::size_t cameras = 0;
    std::size_t lights = 0;
    std::size_t textureSets = 0;  ///< sets of texture coordinates that no colour texture uses
    std::size_t colourSets = 0;
};

}  // namespace vxbtool::importing
