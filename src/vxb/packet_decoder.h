#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "format/drawing_code.h"
#include "vxb/vxb_file.h"

namespace mqf2vxb {

/// One polygon of a packet group, with the values of its fields.
class PacketPolygon {
public:
    const PacketForm* form = nullptr;
    std::uint32_t offset = 0;  ///< of its first word
    std::uint32_t words = 0;
    /// Its place in its strip; 0 for a polygon that stands alone.
    std::uint32_t place = 0;

    /// Whether the packet carries a field. Vertices 0 and 1 of a strip's further polygons are not
    /// carried, yet have values: those of the polygon before.
    [[nodiscard]] bool has(Field field) const { return (carried_ >> index(field) & 1U) != 0; }
    /// 0 for a field that the packet does not have.
    [[nodiscard]] std::uint32_t operator[](Field field) const { return values_[index(field)]; }
    [[nodiscard]] std::size_t corners() const { return form->corners(); }
    [[nodiscard]] std::uint32_t vertex(std::size_t corner) const {
        return values_[index(Field::V0) + corner];
    }

    /// Whether its corners run the other way than its front tells: every other triangle of a strip does.
    [[nodiscard]] bool runsBackwards() const { return form->strip() && place % 2 == 1; }

    void set(Field field, std::uint32_t value) {
        values_[index(field)] = value;
        carried_ |= 1U << index(field);
    }
    /// Makes this the next polygon of its group, before its fields are set. A further polygon of a
    /// strip begins with the last two corners of the one before.
    void next(std::uint32_t itsPlace) {
        carried_ = 0;
        place = itsPlace;
        if (place > 0) {
            values_[index(Field::V0)] = vertex(1);
            values_[index(Field::V1)] = vertex(2);
        }
    }

private:
    static constexpr std::size_t index(Field field) { return static_cast<std::size_t>(field); }

    std::array<std::uint32_t, fieldNum> values_{};
    std::uint32_t carried_ = 0;
};

/// How many of a polygon's corners are vertices. A line or a sprite in a strip has other numbers in
/// the rest; its drawing code tells it, and where a form has none it passes for a triangle.
inline std::size_t vertexCorners(const PacketPolygon& polygon) {
    switch (polygon.form->strip() ? polygon[Field::C0] >> 24U & drawing_code::kindMask : 0) {
    case drawing_code::line: return 2;
    case drawing_code::sprite: return 1;
    default: return polygon.corners();
    }
}

/// Calls `visit(field, offset, value)` for every field of a packet's words in their order: once
/// for a field that fills its word, else for the low half and then for the high half.
template <typename Visit>
void forEachField(const VxbFile& file, const PacketWords& words, std::uint32_t offset,
                  Visit&& visit) {
    for (const PacketWord word : words) {
        const std::uint32_t value = file.words[offset];
        if (isWholeWord(word.low)) {
            visit(word.low, offset, value);
        } else {
            visit(word.low, offset, value & 0xFFFFU);
            visit(word.high, offset, value >> 16U);
        }
        ++offset;
    }
}

/// The same for all words of one polygon.
template <typename Visit>
void forEachField(const VxbFile& file, const PacketPolygon& polygon, Visit&& visit) {
    const PacketForm& form = *polygon.form;
    forEachField(file, form.opening, polygon.offset, visit);
    forEachField(file, polygon.place > 0 ? form.further : form.packet,
                 polygon.offset + static_cast<std::uint32_t>(form.opening.size()), visit);
}

/// Calls `visit(polygon)` for every polygon of a group, a strip's polygons one after the other, as
/// far as the group's words reach.
template <typename Visit>
void forEachPolygon(const VxbFile& file, const PacketGroup& group, Visit&& visit) {
    if (group.form == nullptr) {
        return;
    }
    const PacketForm& form = *group.form;
    const std::uint32_t end = group.offset + group.words;
    std::uint32_t offset = group.offset;
    PacketPolygon polygon;
    polygon.form = &form;
    while (offset < end) {
        const std::uint32_t number = form.strip() ? file.words[offset++] : 1;
        for (std::uint32_t place = 0; place < number; ++place) {
            polygon.next(place);
            polygon.offset = offset;
            polygon.words =
                static_cast<std::uint32_t>(place > 0 ? form.furtherSize() : form.size());
            if (polygon.words > end - offset) {
                return;
            }
            forEachField(file, polygon, [&](Field field, std::uint32_t, std::uint32_t value) {
                if (field != Field::zero) {
                    polygon.set(field, value);
                }
            });
            visit(static_cast<const PacketPolygon&>(polygon));
            offset += polygon.words;
        }
    }
}

}  // namespace mqf2vxb
