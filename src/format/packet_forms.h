#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "format/primitive_type.h"

namespace mqf2vxb {

/// What a packet word, or one 16-bit half of it, holds.
enum class Field : std::uint8_t {
    zero,
    // Vertex indices of the corners.
    V0,
    V1,
    V2,
    V3,
    // Normal indices of the corners.
    N0,
    N1,
    N2,
    N3,
    // Texture coordinates of the corners.
    T0,
    T1,
    T2,
    T3,
    // Position of the colour lookup table, and texture page.
    clut,
    page,
    // Colour words of the corners.
    C0,
    C1,
    C2,
    C3,
    // Texture window word.
    window,
};
inline constexpr std::size_t fieldNum = static_cast<std::size_t>(Field::window) + 1;

constexpr bool isWholeWord(Field field) { return field >= Field::C0; }

/// The field of a corner, 0 to 3, given that of corner 0.
constexpr Field cornerField(Field corner0, std::size_t corner) {
    return static_cast<Field>(static_cast<std::size_t>(corner0) + corner);
}

/// One word of a packet. A field that fills its whole word stands in `low`.
struct PacketWord {
    Field low = Field::zero;
    Field high = Field::zero;
};

/// A short list of packet words, made when the program is compiled.
class PacketWords {
public:
    constexpr PacketWords() = default;
    constexpr void add(PacketWord word) {
        words_[size_++] = word;
        fields_ |= bit(word.low) | bit(word.high);
    }
    constexpr void add(std::span<const PacketWord> words) {
        for (const PacketWord word : words) {
            add(word);
        }
    }
    [[nodiscard]] constexpr std::size_t size() const { return size_; }
    /// Whether a field stands in one of the words.
    [[nodiscard]] constexpr bool has(Field field) const { return (fields_ & bit(field)) != 0; }
    [[nodiscard]] constexpr PacketWord operator[](std::size_t i) const { return words_[i]; }
    /// Puts a field into the free high half of the last word.
    constexpr void fillLast(Field field) {
        words_[size_ - 1].high = field;
        fields_ |= bit(field);
    }
    [[nodiscard]] constexpr const PacketWord* begin() const { return words_.data(); }
    [[nodiscard]] constexpr const PacketWord* end() const { return words_.data() + size_; }

    static constexpr std::size_t most = 32;

private:
    static constexpr std::uint32_t bit(Field field) {
        return 1U << static_cast<std::uint32_t>(field);
    }

    std::array<PacketWord, most> words_{};
    std::size_t size_ = 0;
    std::uint32_t fields_ = 0;
};

enum class PacketFamily : std::uint8_t { lit, unlit, window, unlitWindow, doubleImage };
enum class PacketShape : std::uint8_t { triangle, quadrangle, strip };

struct PacketFamilyTraits {
    PacketFamily family;
    PrimitiveTypeCode bits;  ///< of all codes of the family
    std::string_view name;   ///< for instance "lit"
    std::string_view title;  ///< the same as a heading
};

/// All families, in ascending order of their codes.
inline constexpr std::array packetFamilies{
    PacketFamilyTraits{PacketFamily::lit, 0, "lit", "Lit"},
    PacketFamilyTraits{PacketFamily::window, type_code::window, "window",
                       "Lit with a texture window"},
    PacketFamilyTraits{PacketFamily::unlit, type_code::unlit, "unlit", "Unlit"},
    PacketFamilyTraits{PacketFamily::doubleImage, type_code::unlit | type_code::doubleImage,
                       "double", "Double image"},
    PacketFamilyTraits{PacketFamily::unlitWindow, type_code::unlit | type_code::window,
                       "unlit window", "Unlit with a texture window"},
};

/// The row of a family. Families without a row have no forms and are never asked for.
constexpr const PacketFamilyTraits& packetFamily(PacketFamily family) {
    const PacketFamilyTraits* traits = packetFamilies.data();
    while (traits->family != family) {
        ++traits;
    }
    return *traits;
}

/// The form of the packets of one code.
struct PacketForm {
    PrimitiveTypeCode code = 0;  ///< without the bits that change no form
    PacketFamily family = PacketFamily::lit;
    PacketShape shape = PacketShape::triangle;
    bool textured = false;
    std::size_t colours = 0;  ///< colour words that a packet has, 0 to 4

    /// What opens every packet: the window word and the colour words.
    PacketWords opening;
    /// The rest of a polygon's packet, or of a strip's first polygon.
    PacketWords packet;
    /// The rest of the packet of a strip's further polygons.
    PacketWords further;

    [[nodiscard]] constexpr bool strip() const { return shape == PacketShape::strip; }
    [[nodiscard]] constexpr std::size_t corners() const {
        return shape == PacketShape::quadrangle ? 4 : 3;
    }
    /// Window packets take texture coordinates as they are; the window word places them.
    [[nodiscard]] constexpr bool windowed() const {
        return family == PacketFamily::window || family == PacketFamily::unlitWindow;
    }
    [[nodiscard]] constexpr bool lit() const {
        return family == PacketFamily::lit || family == PacketFamily::window;
    }

    /// Words of a polygon, or of a strip's first polygon without the strip's count word.
    [[nodiscard]] constexpr std::size_t size() const { return opening.size() + packet.size(); }
    /// Words of a further polygon of a strip.
    [[nodiscard]] constexpr std::size_t furtherSize() const {
        return opening.size() + further.size();
    }
};

/// All 66 forms, in ascending order of their codes.
std::span<const PacketForm> packetForms();

/// The form of a polygon's or strip's type code; null when the code has none.
const PacketForm* findPacketForm(PrimitiveTypeCode code);

}  // namespace mqf2vxb
