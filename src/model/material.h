#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "model/coordinate_lists.h"
#include "model/primitive_type.h"
#include "model/table.h"

namespace mqf2vxb {

/// The bits of a material's flag word that mean something.
namespace material_flag {
inline constexpr std::uint32_t unlit = 0x01;
inline constexpr std::uint32_t bit02 = 0x02;
inline constexpr std::uint32_t bit04 = 0x04;
inline constexpr std::uint32_t doubleImage = 0x80;
}  // namespace material_flag

/// How one line of the SRF file makes its polygons look. Fields that its kind does not fill are 0.
struct MaterialAppearance {
    std::uint32_t flag = 0;
    char shading = 0;  ///< 'F' flat, 'G' smooth
    char kind = 0;     ///< one of C G T D H W S N
    std::int32_t texture = 0;
    std::array<std::int32_t, 4> r{};
    std::array<std::int32_t, 4> g{};
    std::array<std::int32_t, 4> b{};
    std::array<std::int32_t, 4> u{};
    std::array<std::int32_t, 4> v{};
    std::int32_t windowWidth = 0;
    std::int32_t windowHeight = 0;
    std::int32_t windowX = 0;
    std::int32_t windowY = 0;

    [[nodiscard]] bool unlit() const { return (flag & material_flag::unlit) != 0; }
    [[nodiscard]] bool textured() const { return kindIs("TDHWSN"); }
    [[nodiscard]] bool windowed() const { return kindIs("WSN"); }
    [[nodiscard]] bool colourPerVertex() const { return kindIs("GHN"); }
    /// The kinds that carry no colour of their own.
    [[nodiscard]] bool colourless() const { return kindIs("TW"); }
    [[nodiscard]] bool oneColour() const { return kindIs("CDS"); }

private:
    [[nodiscard]] bool kindIs(std::string_view kinds) const {
        return kinds.find(kind) != std::string_view::npos;
    }
};

/// One polygon that the SRF file names. The Material Data Base drives everything after reading: a
/// polygon without a record is not written.
struct MaterialRecord {
    PrimitiveTypeCode type = 0;
    CoordinateListId cno = CoordinateListId::origin;
    std::int32_t polygon = 0;      ///< index into the Polygon Data Base
    std::uint32_t appearance = 0;  ///< index into MaterialTable::appearances
};

/// The Material Data Base. The polygons of one SRF line look the same, so each line's appearance
/// is stored once.
struct MaterialTable {
    Table<MaterialRecord> records{"Material Data Base"};
    Table<MaterialAppearance> appearances{"Material Data Base"};

    [[nodiscard]] const MaterialAppearance& appearance(const MaterialRecord& material) const {
        return appearances[material.appearance];
    }
};

}  // namespace mqf2vxb
