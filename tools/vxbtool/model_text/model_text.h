#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "format/primitive_type.h"

/// A model as its files say it, ready to be written (see model_files_writer.h). The numbers are those
/// of the files: what a converter makes of them is none of this folder's business. Every comment may
/// have several lines; empty ones are not written.
namespace vxbtool::model_text {

/// A comment above an entry of a list.
struct Note {
    std::size_t before = 0;  ///< index of the entry; the list's size for a note behind the last
    std::string text;
};

/// Comments of one list, in ascending order of their entries: a list of a million has a few.
using Notes = std::vector<Note>;

// GEO

struct Point {
    float x = 0;
    float y = 0;
    float z = 0;
};

/// What a polygon's first number says.
enum class PolygonShape : std::uint8_t { triangle = 0, quadrangle = 1, line = 2, sprite = 3 };

struct Polygon {
    PolygonShape shape = PolygonShape::triangle;
    std::array<std::uint32_t, 4> vertices{};  ///< a triangle's fourth counts for nothing
    std::array<std::uint32_t, 4> normals{};
};

struct Geometry {
    std::vector<Point> vertices;
    std::vector<Point> normals;
    std::vector<Polygon> polygons;
    Notes vertexNotes;
    Notes normalNotes;
    Notes polygonNotes;
};

// SRF

/// How polygons look: the words of an SRF line behind its polygons.
struct Look {
    std::uint32_t flag = 0;
    char shading = 'F';
    char kind = 'C';
    std::uint32_t firstNumber = 0;  ///< index into Materials::numbers; the kind tells how many
};

/// A polygon and its look. Consecutive uses of one look become one line, with ranges.
struct LookUse {
    std::uint32_t polygon = 0;
    std::uint32_t look = 0;  ///< index into Materials::looks
};

struct Materials {
    std::vector<Look> looks;
    std::vector<std::int32_t> numbers;
    std::vector<LookUse> uses;  ///< in the order in which the polygons are to be written
    Notes notes;                ///< above the lines that begin with these uses

    /// Adds a look, whose numbers are as many as its kind has; returns its index.
    std::uint32_t add(std::uint32_t flag, char shading, char kind,
                      std::span<const std::int32_t> lookNumbers);
};

// FRM

struct Coordinate {
    std::array<std::int32_t, 9> matrix{4096, 0, 0, 0, 4096, 0, 0, 0, 4096};  ///< row by row
    std::array<std::int32_t, 3> translation{};
    std::array<std::int32_t, 3> extra{};
    std::uint32_t parent = 0;  ///< itself for a root
};

/// A line that puts vertices under a coordinate; consecutive vertices become ranges.
struct Assignment {
    std::uint32_t coordinate = 0;
    std::vector<std::uint32_t> vertices;
};

struct Hierarchy {
    std::vector<Coordinate> coordinates;
    std::vector<Assignment> assignments;
    Notes coordinateNotes;  ///< for instance the name of each
    Notes assignmentNotes;
};

// BND

struct Meshes {
    std::vector<std::uint32_t> polygons;  ///< those of all meshes, one mesh behind the other
    std::vector<std::size_t> ends;        ///< of each mesh, the end of its polygons
    Notes notes;
};

// CLP

/// A sequence header: START with a label and a number, or KEY2 with two labels.
struct SequenceHeader {
    bool key2 = false;
    std::string label;   ///< one that stands nowhere is written as it is
    std::string second;  ///< of KEY2
    std::uint32_t number = 0;
};

struct AnimatedCoordinate {
    std::uint32_t coordinate = 0;
    std::string start;  ///< label of its first step
    std::vector<SequenceHeader> headers;
};

enum class StepKind : std::uint8_t { keyFrame, jump, end };

/// SEQ, GOTO or END.
struct Step {
    StepKind kind = StepKind::end;
    std::string label;                    ///< on the line before it; empty for none
    std::uint32_t number = 0;             ///< of SEQ and END, and the first of GOTO
    std::uint32_t second = 0;             ///< of GOTO
    std::string target;                   ///< of GOTO
    mqf2vxb::PrimitiveTypeCode type = 0;  ///< of SEQ
    std::uint32_t keyFrame = 0;           ///< of SEQ: counted from 0 in the first group of its type
};

/// TYPE and the key frames behind it. Each has as many values as findKeyFrameForm tells, in the order
/// of its line: translation, rotation, scale.
struct KeyFrameGroup {
    mqf2vxb::PrimitiveTypeCode type = 0;
    std::vector<float> values;
    Notes notes;  ///< by key frame
};

struct Motion {
    std::string comment;
    std::vector<AnimatedCoordinate> coordinates;
    std::vector<Step> steps;
    std::vector<KeyFrameGroup> groups;  ///< one at least: the file format asks for it
    Notes coordinateNotes;
    Notes stepNotes;
};

// PXL

struct ImageBlock {
    std::uint16_t x = 0;  ///< in image memory, in columns of 16 bits
    std::uint16_t y = 0;
    std::uint32_t size = 0;  ///< the word behind the position: width and height as a rule
    std::vector<std::uint32_t> words;
};

struct Texture {
    std::string comment;     ///< above its line in the MQF file
    std::uint32_t mode = 0;  ///< 0 4-bit, 1 8-bit, 2 16-bit pixels
    std::optional<ImageBlock> clut;
    ImageBlock pixels;
};

struct ModelText {
    /// The first lines of the MQF file, such as the options to convert with.
    std::string heading;
    /// The first lines of the other files.
    std::string geometryComment;
    std::string materialComment;
    std::string hierarchyComment;
    std::string meshComment;

    // A part that is not there has no file.
    std::optional<Geometry> geometry;
    std::optional<Materials> materials;
    std::optional<Hierarchy> hierarchy;
    std::optional<Meshes> meshes;
    std::vector<Texture> textures;
    std::vector<Motion> motions;
};

}  // namespace vxbtool::model_text
