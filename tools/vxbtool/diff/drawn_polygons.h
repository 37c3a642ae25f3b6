#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vxb/packet_decoder.h"
#include "vxb/vxb_file.h"
#include "vxbtool/shared/packet_owners.h"

namespace vxbtool::diff {

/// One drawn polygon. What can be compared between files is hashed: points by their components, not
/// by their numbers.
struct DrawnPolygon {
    std::uint32_t group = 0;   ///< its packet group
    std::uint32_t offset = 0;  ///< of its packet's first word
    std::uint8_t corners = 0;  ///< those that are vertices
    std::uint8_t normalNum = 0;
    bool backwards = false;  ///< a triangle whose front is not on the side that its `order` tells
    /// The corners, a triangle's by their places, so that it does not matter which comes first.
    std::array<std::uint8_t, 4> order{0, 1, 2, 3};
    std::array<std::uint32_t, 4> vertices{};
    std::array<std::uint32_t, 4> normals{};

    std::uint64_t where = 0;    ///< who draws it, and in which form
    std::uint64_t form = 0;     ///< the form alone
    std::uint64_t points = 0;   ///< who draws it, and the places of its corners
    std::uint64_t facing = 0;   ///< its normals, and the way its corners run
    std::uint64_t colours = 0;  ///< colour words
    std::uint64_t texels = 0;   ///< texture coordinates
    std::uint64_t texture = 0;  ///< page, colour table and window, and halves without a meaning

    /// All but the points and the normals.
    [[nodiscard]] std::array<std::uint64_t, 4> look() const {
        return {where, colours, texels, texture};
    }
    [[nodiscard]] bool operator==(const DrawnPolygon& other) const {
        return look() == other.look() && points == other.points && facing == other.facing;
    }
};

/// The polygons of one file, and the points that they name.
class DrawnPolygons {
public:
    /// `mirrors` tells of each coordinate whether it mirrors what it draws. Both sides of a comparison
    /// have those of one, so that a matrix that changes is no change of polygons.
    DrawnPolygons(const mqf2vxb::VxbFile& file, std::vector<bool> mirrors);

    [[nodiscard]] const std::vector<DrawnPolygon>& all() const { return polygons_; }
    /// "coordinate 3", "coordinates 3, 4" or "shared polygons"; of a long list of coordinates, the
    /// first ones and how many more.
    [[nodiscard]] const std::string& ownerOf(const DrawnPolygon& polygon) const {
        return ownerNames_[polygon.group];
    }
    /// "lit smooth triangles".
    [[nodiscard]] std::string formOf(const DrawnPolygon& polygon) const;
    [[nodiscard]] mqf2vxb::PrimitiveTypeCode typeOf(const DrawnPolygon& polygon) const;
    /// Nothing for a number that names no point of the file.
    [[nodiscard]] std::optional<mqf2vxb::Point> vertex(const DrawnPolygon& polygon,
                                                       std::uint32_t index) const;
    [[nodiscard]] std::optional<mqf2vxb::Point> normal(const DrawnPolygon& polygon,
                                                       std::uint32_t index) const;
    /// Where a corner lies, as one number; or what stands in a field that is no vertex.
    [[nodiscard]] std::uint64_t placeOf(const DrawnPolygon& polygon, std::uint32_t corner) const;
    [[nodiscard]] bool isShared(const DrawnPolygon& polygon) const {
        return file_.packetGroups[polygon.group].shared;
    }

    /// The coordinate of a shared vertex or normal; 0 of another one, and of one that has none.
    [[nodiscard]] std::uint32_t vertexOwner(const DrawnPolygon& polygon, std::uint32_t index) const;
    [[nodiscard]] std::uint32_t normalOwner(const DrawnPolygon& polygon, std::uint32_t index) const;

private:
    void nameOwners();
    [[nodiscard]] bool isTurnedByMirrors(const DrawnPolygon& polygon) const;
    void add(std::uint32_t group, const mqf2vxb::PacketPolygon& packet);

    const mqf2vxb::VxbFile& file_;
    SharedOwners sharedOwners_;
    std::vector<bool> mirrors_;               // by coordinate
    std::vector<std::string> ownerNames_;     // by packet group
    std::vector<std::uint64_t> ownerHashes_;  // by packet group, of all its coordinates
    std::vector<DrawnPolygon> polygons_;
};

}  // namespace vxbtool::diff
