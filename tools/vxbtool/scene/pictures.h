#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/key_map.h"
#include "vxb/packet_decoder.h"
#include "vxbtool/scene/image_memory.h"
#include "vxbtool/scene/scene.h"

namespace vxbtool::scene {

/// The pictures of all polygons with a texture. All uses are named first, so that polygons beside each
/// other in one page share a picture.
class Pictures {
public:
    explicit Pictures(const ImageMemory& memory) : memory_(memory) {}

    /// Names what a polygon with a texture uses: the texels between its first corners.
    void use(const mqf2vxb::PacketPolygon& polygon, std::size_t corners);
    /// Makes the pictures of all uses in a file of so many words. A checker stands where no image lies,
    /// one picture of one texel for all that are beyond the limits, and warnings tell.
    [[nodiscard]] std::vector<Picture> make(std::size_t words, std::vector<std::string>& warnings);
    /// The picture of a polygon that was named.
    [[nodiscard]] std::uint32_t find(const mqf2vxb::PacketPolygon& polygon) const;

private:
    /// Texels of a page.
    struct Rectangle {
        std::uint32_t left = 256;
        std::uint32_t top = 256;
        std::uint32_t right = 0;  ///< one behind the last
        std::uint32_t bottom = 0;

        void add(const Rectangle& other);
        bool operator==(const Rectangle&) const = default;
    };
    /// All uses of one page, depth, colour table and window.
    struct Source {
        std::uint32_t page = 0;
        std::uint32_t clut = 0;
        std::optional<std::uint32_t> window;
        std::vector<Rectangle> uses;  // one for a window
        std::uint32_t firstPicture = 0;
        std::vector<std::uint16_t> partOf;  // by cell, when the uses make several pictures
    };

    static std::uint64_t keyOf(const mqf2vxb::PacketPolygon& polygon);
    static std::vector<Rectangle> split(Source& source);
    [[nodiscard]] Picture picture(const Source& source, const Rectangle& part) const;

    const ImageMemory& memory_;
    mqf2vxb::KeyMap<std::uint64_t, std::uint32_t> sourceOf_;
    std::vector<Source> sources_;
    std::size_t uncovered_ = 0;  // polygons with a corner where no image lies
};

/// A corner's texel, counted from its page's first or from its window's.
struct CornerTexel {
    std::uint32_t x;
    std::uint32_t y;
};
inline CornerTexel cornerTexel(const mqf2vxb::PacketPolygon& polygon, std::size_t corner) {
    const std::uint32_t field = polygon[mqf2vxb::cornerField(mqf2vxb::Field::T0, corner)];
    return {field & 0xFFU, field >> 8U};
}

}  // namespace vxbtool::scene
