#include "writers/coordinate_section.h"

#include <array>

#include "format/format.h"

namespace mqf2vxb {
namespace {

std::uint32_t pair(std::int16_t low, std::int16_t high) {
    return static_cast<std::uint16_t>(low) |
           static_cast<std::uint32_t>(static_cast<std::uint16_t>(high)) << 16U;
}

std::uint32_t recordOffset(const OutputLayout& layout, std::size_t coordinate) {
    return static_cast<std::uint32_t>(layout.coordinateTop + 1 +
                                      format::coordinateSize * coordinate);
}

}  // namespace

void writeCoordinateSection(const Model& model, const OutputLayout& layout,
                            OutputWordStream& stream) {
    stream.checkPosition(layout.coordinateTop, "coordinate section");
    stream.putWord(static_cast<std::uint32_t>(model.coordinates.size()), "/* Coordinate Number */");
    for (std::size_t c = 0; c < model.coordinates.size(); ++c) {
        const CoordinateRecord& coordinate = model.coordinates[c];
        const auto& m = coordinate.matrix;
        const auto& t = coordinate.translation;
        const auto& e = coordinate.extra;
        const auto parent = static_cast<std::size_t>(coordinate.parent);

        // Between translation and extra is room for a second matrix and translation, which the
        // file leaves zero like the first word of the record.
        const std::array<std::uint32_t, format::coordinateSize - 1> words{
            pair(m[0], m[1]),
            pair(m[2], m[3]),
            pair(m[4], m[5]),
            pair(m[6], m[7]),
            pair(m[8], 0),
            static_cast<std::uint32_t>(t[0]),
            static_cast<std::uint32_t>(t[1]),
            static_cast<std::uint32_t>(t[2]),
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            pair(e[0], e[1]),
            pair(e[2], 0),
            parent == c ? 0 : recordOffset(layout, parent)};
        stream.putWord(0, "/* Coordinate%d Top */", static_cast<std::int32_t>(c));
        stream.putWords(words);
    }
}

}  // namespace mqf2vxb
