#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "vxb/vxb_file.h"

/// A VXB file as a picture needs it: what docs/conventions.md makes of its bits. Export, view and
/// render show a scene; none of them reads the file's words. Axes, units and the sense of triangles
/// stay those of the file: x to the model's left, y up, z to its front, clockwise from the front.
namespace vxbtool::scene {

using Vector3 = std::array<float, 3>;

/// One colour of a picture: red, green, blue and alpha, 0 to 255.
using Rgba = std::array<std::uint8_t, 4>;

/// What polygons with a texture pick from image memory, each picture once: the texels that they use
/// of one page, depth and colour table; of a window its whole repeated area.
struct Picture {
    std::uint32_t width = 0;  ///< in texels
    std::uint32_t height = 0;
    std::vector<Rgba> texels;  ///< line after line, the first at the top; a value of 0 has alpha 0
    bool cutOut = false;       ///< whether a texel is not drawn
    /// No image lies there: a checker stands for it.
    bool missing = false;
    std::uint32_t depth = 0;              ///< bits of a texel
    std::uint32_t page = 0;               ///< the packets' page field without the flag bits
    std::optional<std::uint32_t> clut;    ///< the CLUT field; none at 16 bits
    std::optional<std::uint32_t> window;  ///< the window word of pictures that repeat
    std::uint32_t x = 0;                  ///< its first texel, counted from the page's first
    std::uint32_t y = 0;
    std::vector<std::uint32_t> images;  ///< the images that it was found in, ascending
};

/// How something that is not opaque meets what is behind it.
enum class Blend : std::uint8_t { opaque, half, add, subtract, addQuarter };

/// What polygons that are drawn alike have in common.
struct Look {
    mqf2vxb::PrimitiveTypeCode type = 0;  ///< without shared, with both flags
    std::uint32_t pageFlags = 0;          ///< flag bits 0x08 and 0x10 of the material as 0 to 3
    bool lit = false;
    bool smooth = false;  ///< normals for each corner
    Blend blend = Blend::opaque;
    std::optional<std::uint32_t> picture;  ///< index into Scene::pictures
    bool repeats = false;                  ///< a window: the picture repeats beyond its edges

    bool operator==(const Look&) const = default;
};

struct Corner {
    Vector3 place{};   ///< in the space of the corner's coordinate, in units
    Vector3 normal{};  ///< of length 1, in the same space; all 0 where the packet has none
    std::array<std::uint8_t, 3> colour{128, 128, 128};  ///< of the colour word; 128 keeps a texture
    /// The middle of the corner's texel, in texels of the picture: texel 0 is 0.5.
    std::array<float, 2> texel{};
    /// Its number among the file's vertices: the shared ones count behind the independent ones.
    std::uint32_t vertex = 0;
    std::uint32_t coordinate = 0;  ///< of shared polygons, whose corner moves with it; else 0
};

/// A triangle or a quadrangle. The corners of a quadrangle run like a strip here, whichever way they
/// ran in the file. Lines and sprites inside strips are not drawn.
struct Polygon {
    std::uint32_t look = 0;         ///< index into Scene::looks
    std::uint32_t firstCorner = 0;  ///< index into Scene::corners
    std::uint32_t cornerNum = 3;
    std::uint32_t group = 0;   ///< its packet group in the file
    std::uint32_t offset = 0;  ///< of its packet's first word in the file
};

/// Polygons that stand together in Scene::polygons and are drawn by the same coordinates.
struct Body {
    std::vector<std::uint32_t>
        coordinates;      ///< who draws it, ascending; empty: drawn at the origin
    bool shared = false;  ///< each corner moves with a coordinate of its own
    std::uint32_t firstPolygon = 0;
    std::uint32_t polygonNum = 0;
};

/// A coordinate at rest: v' = matrix v + translation, and then the same with the parent's.
struct Coordinate {
    std::array<float, 9> matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};  ///< row by row, 1.0 as 1
    Vector3 translation{};
    std::array<std::int32_t, 3> extra{};  ///< the three values behind the translation
    std::optional<std::uint32_t> parent;
};

/// What a step sets of a coordinate. A part that it has not stays as it was.
struct Pose {
    std::optional<Vector3> translation = {};  ///< in units
    std::optional<Vector3> angles = {};  ///< about x, y and z in radians, x first, then y, then z
    std::optional<Vector3> scale = {};
};

struct Key {
    double frame = 0;  ///< from the start of the motion
    Pose pose;
    /// Whether values go evenly from this key's to the next one's; else they stay until there.
    bool even = true;
};

/// One coordinate of a motion: its steps from its start, one round of a loop, until END or the first
/// step that comes again.
struct Track {
    std::uint32_t coordinate = 0;
    /// In ascending order of their frames. Of several at one frame each sets its parts.
    std::vector<Key> keys;
    bool loops = false;   ///< it ended with a step that comes again
    double loopFrom = 0;  ///< the frame of that step: further rounds begin there
    double frames = 0;    ///< up to the end, or up to the step that comes again
};

struct Motion {
    std::vector<Track> tracks;
    double frames = 0;  ///< of the longest track
};

/// Where an image lies in image memory, in columns of 16 bits and lines.
struct ImagePlace {
    std::uint32_t image = 0;  ///< index into the file's images
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool clut = false;  ///< the rectangle of the image's colour table
};

struct Scene {
    std::vector<Coordinate> coordinates;
    std::vector<Body> bodies;
    std::vector<Polygon> polygons;
    std::vector<Corner> corners;
    std::vector<Look> looks;
    std::vector<Picture> pictures;
    std::vector<Motion> motions;
    std::vector<ImagePlace> imagePlaces;
    /// What a person should know of the picture, a sentence each: textures that no image covers, lines
    /// and sprites that are not drawn.
    std::vector<std::string> warnings;
};

/// Makes the scene of a file. Whatever a damaged file lacks is left out, and a warning tells.
Scene makeScene(const mqf2vxb::VxbFile& file);

/// A matrix of 3 x 4 values, row by row: the last column is the translation.
using Placement = std::array<float, 12>;

/// Where every coordinate stands in the model, at rest or in a motion. A frame beyond the end of a
/// track that loops is taken in its next round, beyond another's end it keeps its last pose.
std::vector<Placement> placements(const Scene& scene);
std::vector<Placement> placements(const Scene& scene, const Motion& motion, double frame);
/// The same at rest, of a file of which nothing else is wanted.
std::vector<Placement> placementsAtRest(const mqf2vxb::VxbFile& file);

/// The rotation of angles about x, y and z, row by row: the one about x is applied first.
std::array<float, 9> rotation(const Vector3& angles);

}  // namespace vxbtool::scene
