#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/table.h"
#include "format/primitive_type.h"
#include "model/coordinate_lists.h"

namespace mqf2vxb {

/// The bits of a material's flag word that mean something.
namespace material_flag {
inline constexpr std::uint32_t unlit = 0x01;
inline constexpr std::uint32_t bit02 = 0x02;
inline constexpr std::uint32_t bit04 = 0x04;
inline constexpr std::uint32_t doubleImage = 0x80;
}  // namespace material_flag

/// What a kind letter makes of a material, and which numbers its lines have: the texture number,
/// the texture window, u and v of four corners, and the colours, as far as the kind has them.
struct MaterialKind {
    bool textured = false;
    bool windowed = false;
    std::uint8_t colours = 0;  ///< 0, 1, or 4 for one per vertex

    static constexpr std::size_t windowStart = 1;
    static constexpr std::size_t windowNumbers = 4;
    static constexpr std::size_t cornerNumbers = 8;
    static constexpr std::size_t colourNumbers = 3;
    static constexpr std::size_t mostNumbers =
        windowStart + windowNumbers + cornerNumbers + 4 * colourNumbers;

    [[nodiscard]] constexpr std::size_t cornerStart() const {
        return windowStart + (windowed ? windowNumbers : 0);
    }
    [[nodiscard]] constexpr std::size_t colourStart() const {
        return textured ? cornerStart() + cornerNumbers : 0;
    }
    [[nodiscard]] constexpr std::size_t numbers() const {
        return colourStart() + colourNumbers * colours;
    }
};

/// The kind of a letter; one that is none of the eight has no numbers.
constexpr MaterialKind materialKind(char letter) {
    // A table, because the jumps of a switch over the letters of many materials are unpredictable.
    constexpr std::array<MaterialKind, 'X' - 'C'> kinds = [] {
        std::array<MaterialKind, 'X' - 'C'> table{};
        table['C' - 'C'] = {false, false, 1};
        table['G' - 'C'] = {false, false, 4};
        table['T' - 'C'] = {true, false, 0};
        table['D' - 'C'] = {true, false, 1};
        table['H' - 'C'] = {true, false, 4};
        table['W' - 'C'] = {true, true, 0};
        table['S' - 'C'] = {true, true, 1};
        table['N' - 'C'] = {true, true, 4};
        return table;
    }();
    const auto index = static_cast<std::size_t>(letter - 'C');
    return index < kinds.size() ? kinds[index] : MaterialKind{};
}

struct Colour {
    std::int32_t r = 0;
    std::int32_t g = 0;
    std::int32_t b = 0;
};

/// One line of the SRF file as it is stored.
struct MaterialLine {
    std::uint32_t flag = 0;
    char shading = 0;
    char kind = 0;
    std::size_t firstNumber = 0;  ///< index into MaterialTable::numbers
};

/// What one line of the SRF file says of its polygons' look: a view into the material table, which
/// has to outlive it. Numbers that the kind does not have are 0.
class MaterialAppearance {
public:
    /// `numbers` are those of the line's kind, in the order of the file.
    MaterialAppearance(const MaterialLine& line, const std::int32_t* numbers)
        : flag(line.flag),
          shading(line.shading),
          kind(line.kind),
          layout_(materialKind(line.kind)),
          numbers_(numbers) {}

    const std::uint32_t flag;
    const char shading;  ///< 'F' flat, 'G' smooth
    const char kind;     ///< one of C G T D H W S N

    [[nodiscard]] bool unlit() const { return (flag & material_flag::unlit) != 0; }
    [[nodiscard]] bool textured() const { return layout_.textured; }
    [[nodiscard]] bool windowed() const { return layout_.windowed; }
    [[nodiscard]] bool colourPerVertex() const { return layout_.colours > 1; }
    /// The textured kinds that carry no colour of their own.
    [[nodiscard]] bool colourless() const { return textured() && layout_.colours == 0; }

    /// Index into the PXL Data Base.
    [[nodiscard]] std::int32_t texture() const { return textured() ? numbers_[0] : 0; }
    /// Texture coordinates of a corner, 0 to 3.
    [[nodiscard]] std::int32_t u(std::size_t corner) const {
        return textured() ? numbers_[layout_.cornerStart() + 2 * corner] : 0;
    }
    [[nodiscard]] std::int32_t v(std::size_t corner) const {
        return textured() ? numbers_[layout_.cornerStart() + 2 * corner + 1] : 0;
    }
    [[nodiscard]] Colour colour(std::size_t corner) const {
        if (corner >= layout_.colours) {
            return {};
        }
        const std::int32_t* rgb =
            numbers_ + layout_.colourStart() + MaterialKind::colourNumbers * corner;
        return {rgb[0], rgb[1], rgb[2]};
    }
    [[nodiscard]] std::int32_t windowWidth() const { return windowNumber(0); }
    [[nodiscard]] std::int32_t windowHeight() const { return windowNumber(1); }
    [[nodiscard]] std::int32_t windowX() const { return windowNumber(2); }
    [[nodiscard]] std::int32_t windowY() const { return windowNumber(3); }

private:
    [[nodiscard]] std::int32_t windowNumber(std::size_t i) const {
        return windowed() ? numbers_[MaterialKind::windowStart + i] : 0;
    }

    MaterialKind layout_;
    const std::int32_t* numbers_;
};

/// One polygon that the SRF file names. The Material Data Base drives everything after reading: a
/// polygon without a record is not written.
struct MaterialRecord {
    PrimitiveTypeCode type = 0;
    CoordinateListId cno = CoordinateListId::origin;
    std::int32_t polygon = 0;  ///< index into the Polygon Data Base
    std::uint32_t line = 0;    ///< index into MaterialTable::lines
    std::uint32_t group = 0;   ///< packet group that it is written in by itself, or `noGroup`

    /// The polygon is written in a strip, or, in a model with meshes, with another record.
    static constexpr std::uint32_t noGroup = 0xFFFFFFFFU;
};

/// The Material Data Base. All polygons of one SRF line look the same, so the line is stored once,
/// with only the numbers that its kind has.
struct MaterialTable {
    Table<MaterialRecord> records{"Material Data Base"};
    Table<MaterialLine> lines{"Material Data Base"};
    Table<std::int32_t> numbers{"Material Data Base"};

    [[nodiscard]] MaterialAppearance appearance(const MaterialRecord& material) const {
        return appearance(lines[material.line]);
    }
    [[nodiscard]] MaterialAppearance appearance(const MaterialLine& line) const {
        return {line, numbers.records().data() + line.firstNumber};
    }
};

}  // namespace mqf2vxb
