// The packets: where each group of them stands, and what their words hold.

#include <algorithm>
#include <numeric>

#include "format/drawing_code.h"
#include "format/format.h"
#include "format/texture_fields.h"
#include "vxb/packet_decoder.h"
#include "vxb/reading.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {
namespace {

/// The packets of the independent or of the shared polygons.
struct Packets {
    bool shared = false;
    std::uint32_t top = 0;
    std::uint32_t limit = 0;  ///< they end here or before
    bool exact = false;       ///< whether they end exactly there
};

/// The descriptions of one kind of header, in the order of their packets.
std::vector<std::uint32_t> descriptionsByPackets(const VxbFile& file, PrimitiveHeaderKind kind) {
    std::vector<std::uint32_t> result;
    for (const PrimitiveHeader& header : file.primitiveHeaders) {
        if (header.kind == kind) {
            for (std::uint32_t i = 0; i < header.descriptionNum; ++i) {
                result.push_back(header.firstDescription + i);
            }
        }
    }
    std::stable_sort(result.begin(), result.end(), [&](std::uint32_t a, std::uint32_t b) {
        return file.descriptions[a].packetOffset < file.descriptions[b].packetOffset;
    });
    return result;
}

PrimitiveTypeCode codeOf(const TypeDescription& description) {
    return description.type & ~type_code::first;
}

/// A body may be drawn under several coordinates: each of their headers describes its packets, and
/// all in the same words. False when they differ.
bool checkAgreement(Reading& r, const TypeDescription& description, const TypeDescription& first) {
    if (codeOf(description) != codeOf(first)) {
        r.report(finding::groupDisagrees, description.offset, description.type, first.type,
                 word_name::type);
    }
    if (description.number != first.number) {
        r.report(finding::groupDisagrees, description.offset + 1, r.at(description.offset + 1),
                 r.at(first.offset + 1), word_name::polygonNumberSize);
    }
    return codeOf(description) == codeOf(first) && description.number == first.number;
}

/// The words before the next group.
struct Room {
    std::uint32_t words = 0;
    bool exact = false;  ///< whether the group has to fill it
};

/// The strips of a group: each begins with the number of its polygons.
struct Strips {
    std::uint32_t number = 0;
    std::uint32_t polygons = 0;
    std::uint32_t words = 0;
    std::optional<std::uint32_t> misfit;  ///< the word that counts more polygons than fit
};

Strips walkStrips(const Reading& r, const PacketGroup& group, std::uint32_t room) {
    Strips strips;
    while (strips.number < group.number && strips.words < room) {
        const std::uint32_t number = r.at(std::uint64_t{group.offset} + strips.words);
        const std::uint64_t words =
            1 + group.form->size() + (std::uint64_t{number} - 1) * group.form->furtherSize();
        if (number == 0 || words > room - strips.words) {
            strips.misfit = group.offset + strips.words;
            break;
        }
        ++strips.number;
        strips.polygons += number;
        strips.words += static_cast<std::uint32_t>(words);
    }
    return strips;
}

/// Where the number of polygons disagrees with a room that whole polygons fill, the number is
/// wrong, else the offset behind the room is.
void placePolygons(Reading& r, PacketGroup& group, const TypeDescription& description,
                   const Room& room, std::uint32_t limit, bool last) {
    const auto size = static_cast<std::uint32_t>(group.form->size());
    const std::uint32_t words = group.number * size;
    const bool wholePolygons = room.words % size == 0;
    const bool tooMany =
        words > limit - group.offset || (words > room.words && wholePolygons && room.exact);
    const bool tooFew = words < room.words && wholePolygons && room.exact && last;
    if (tooMany || tooFew) {
        r.checkCount(description.offset + 1, word_name::polygonNumberSize, group.number,
                     room.words / size);
        group.number = room.words / size;
    }
    group.polygons = group.number;
    group.words = group.number * size;
}

/// Where strips do not fit their room and yet have an end of their own, the offset behind the room
/// is wrong; that is looked at only when `mayReachOn`.
void placeStrips(Reading& r, PacketGroup& group, const TypeDescription& description,
                 const Room& room, bool mayReachOn) {
    Strips strips = walkStrips(r, group, room.words);
    if (strips.misfit && mayReachOn) {
        // A wrong count is off by whole polygons.
        const Strips whole = walkStrips(r, group, r.polygonsEnd - group.offset);
        if (!whole.misfit && whole.number == group.number &&
            (whole.words - room.words) % group.form->furtherSize() != 0) {
            strips = whole;
        }
    }
    group.polygons = strips.polygons;
    group.words = strips.words;
    if (strips.misfit) {
        r.report(finding::stripDoesNotFit, *strips.misfit, r.at(*strips.misfit));
        group.words = room.words;
        group.fits = false;
    } else {
        r.checkCount(description.offset + 1, word_name::polygonNumberSize, group.number,
                     strips.number);
    }
    group.number = strips.number;
}

/// Reads the groups of the independent or of the shared polygons.
class GroupReader {
public:
    GroupReader(Reading& r, const Packets& packets)
        : r_(r),
          packets_(packets),
          descriptions_(r.file.descriptions),
          order_(descriptionsByPackets(r.file, packets.shared ? PrimitiveHeaderKind::shared
                                                              : PrimitiveHeaderKind::independent)) {
    }

    void read() {
        for (std::size_t i = 0; i < order_.size();) {
            const std::size_t next = endOfGroup(i);
            readGroup(i, next);
            i = next;
        }
        if (damaged_ && packets_.exact) {
            r_.skipTo(packets_.limit);
        }
    }

private:
    /// Behind the last description, in order, that names the same packets.
    [[nodiscard]] std::size_t endOfGroup(std::size_t begin) {
        const TypeDescription& first = descriptions_[order_[begin]];
        std::size_t end = begin + 1;
        while (end < order_.size() &&
               descriptions_[order_[end]].packetOffset == first.packetOffset) {
            damaged_ = !checkAgreement(r_, descriptions_[order_[end]], first) || damaged_;
            ++end;
        }
        return end;
    }

    /// The words from the cursor to the group of the next description.
    [[nodiscard]] Room roomBefore(std::size_t next) const {
        const std::uint32_t start = r_.cursor();
        if (start >= packets_.limit) {
            return {0, packets_.exact};
        }
        if (next < order_.size()) {
            const std::uint64_t place =
                std::uint64_t{packets_.top} + descriptions_[order_[next]].packetOffset;
            if (place >= start && place <= packets_.limit) {
                return {static_cast<std::uint32_t>(place) - start, true};
            }
        }
        return {packets_.limit - start, packets_.exact};
    }

    /// Whether a group fills its room from the cursor on.
    [[nodiscard]] bool fitsAtCursor(PacketGroup group, const Room& room) const {
        group.offset = r_.cursor();
        if (!room.exact || group.form == nullptr) {
            return false;
        }
        return group.form->strip() ? walkStrips(r_, group, room.words).words == room.words
                                   : std::uint64_t{group.number} * group.form->size() == room.words;
    }

    void readGroup(std::size_t begin, std::size_t end) {
        const TypeDescription& description = descriptions_[order_[begin]];
        PacketGroup group;
        group.shared = packets_.shared;
        group.code = codeOf(description);
        group.form = findPacketForm(group.code);
        group.number = description.number;
        std::uint64_t place = std::uint64_t{packets_.top} + description.packetOffset;
        const std::uint32_t placeWord = description.offset + 2;
        if (place != r_.cursor() && !damaged_ && fitsAtCursor(group, roomBefore(end))) {
            r_.report(finding::wrongOffset, placeWord, description.packetOffset,
                      r_.cursor() - packets_.top, word_name::primitiveIndex);
            place = r_.cursor();
        }
        if (place < r_.cursor() || place >= packets_.limit) {
            const bool inside = place < r_.cursor();
            r_.report(inside ? finding::groupOverlaps : finding::groupOutside, placeWord,
                      description.packetOffset,
                      (inside ? r_.cursor() : packets_.limit) - packets_.top,
                      word_name::primitiveIndex);
            damaged_ = true;
            return;
        }
        r_.skipTo(static_cast<std::uint32_t>(place));
        group.offset = r_.cursor();
        const Room room = roomBefore(end);
        if (group.form == nullptr) {
            group.words = room.words;
        } else if (group.form->strip()) {
            placeStrips(r_, group, description, room, !damaged_);
            damaged_ = damaged_ || !group.fits;
        } else {
            placePolygons(r_, group, description, room, r_.polygonsEnd,
                          end == order_.size() && !damaged_);
        }
        const auto index = static_cast<std::uint32_t>(r_.file.packetGroups.size());
        r_.take(Part::packetGroup, index, group.words, "packets");
        r_.file.packetGroups.push_back(group);
        for (std::size_t i = begin; i < end; ++i) {
            descriptions_[order_[i]].group = index;
        }
    }

    Reading& r_;
    Packets packets_;
    std::vector<TypeDescription>& descriptions_;
    std::vector<std::uint32_t> order_;  ///< of the descriptions' packets
    bool damaged_ = false;              ///< whether something before did not fit
};

/// Packets that begin at the cursor and end at a place that the file names, if they can end there.
Packets packetsBefore(const Reading& r, bool shared, std::optional<std::uint32_t> end) {
    const bool possible = end && *end >= r.cursor() && *end <= r.polygonsEnd;
    return {shared, r.cursor(), possible ? *end : r.polygonsEnd, possible};
}

}  // namespace

void readPacketGroups(Reading& r) {
    const bool independent = r.file.globalHeader(GlobalHeaderKind::independent).has_value();
    const bool shared = r.file.globalHeader(GlobalHeaderKind::shared).has_value();
    const auto vertexTop =
        r.top(GlobalHeaderKind::independent, global_header::independentVertexTop);
    if (independent) {
        const auto sharedTop = r.top(GlobalHeaderKind::shared, global_header::sharedPrimitiveTop);
        GroupReader(r, packetsBefore(r, false, shared ? sharedTop : vertexTop)).read();
        if (shared) {
            r.checkTop(GlobalHeaderKind::shared, global_header::sharedPrimitiveTop, r.cursor());
        }
    }
    if (shared && independent) {
        GroupReader(r, packetsBefore(r, true, vertexTop)).read();
    } else if (shared) {
        // Vertices that nobody uses may stand before the shared ones.
        Packets packets =
            packetsBefore(r, true, r.top(GlobalHeaderKind::shared, global_header::sharedVertexTop));
        packets.exact = false;
        GroupReader(r, packets).read();
    }
}

namespace {

/// The drawing code of a polygon that is no strip's, as its type tells it.
std::uint32_t drawingCode(PrimitiveTypeCode code) {
    std::uint32_t result = drawing_code::face;
    const auto set = [&](std::uint32_t bit, bool when) { result |= when ? bit : 0; };
    set(drawing_code::colourPerCorner,
        (code & (type_code::smooth | type_code::colourPerCorner)) != 0);
    set(drawing_code::quadrangle, (code & type_code::strip) == type_code::quadrangle);
    set(drawing_code::textured, (code & type_code::textured) != 0);
    set(drawing_code::flag04, (code & type_code::flag04) != 0);
    return result;
}

/// Checks the words of one group's packets.
class PacketCheck {
public:
    PacketCheck(Reading& r, const PacketGroup& group)
        : r_(r), group_(group), strip_(group.form != nullptr && group.form->strip()) {
        const VxbFile& file = r.file;
        vertexNum_ = group.shared ? file.vertices.shared.number
                                  : file.vertices.independent.number + file.vertices.shared.number;
        normalNum_ = group.shared ? file.normals.shared.number
                                  : file.normals.independent.number + file.normals.shared.number;
        checkVertices_ = file.vertices.known;
        // A model without normals keeps the indices that its polygons were given.
        checkNormals_ = file.normals.known && normalNum_ > 0;
    }

    void check() {
        forEachPolygon(r_.file, group_, [this](const PacketPolygon& polygon) {
            drawingCode_ = strip_ ? polygon[Field::C0] >> 24U : drawingCode(group_.code);
            forEachField(r_.file, polygon,
                         [&](Field field, std::uint32_t offset, std::uint32_t value) {
                             checkField(field, offset, value);
                             if (polygon[field] != value && field != Field::zero) {
                                 // Only a double packet has a field twice; the later value holds.
                                 r_.report(finding::imagesDiffer, offset, polygon[field], value);
                             }
                         });
        });
    }

private:
    void checkField(Field field, std::uint32_t offset, std::uint32_t value) {
        switch (field) {
        case Field::zero:
            if (value != 0) {
                r_.report(finding::notZero, offset, value, 0, "the free half of a packet word");
            }
            break;
        case Field::V0:
        case Field::V1:
        case Field::V2:
        case Field::V3:
            if (checkVertices_ && value >= vertexNum_) {
                vertexOutside(offset, value);
            }
            break;
        case Field::N0:
        case Field::N1:
        case Field::N2:
        case Field::N3:
            if (checkNormals_ && value >= normalNum_) {
                // A strip's polygons carry normals whether they are lit and smooth or not.
                r_.report(strip_ ? finding::stripNormalOutside : finding::normalOutside, offset,
                          value, normalNum_);
            }
            break;
        case Field::page:
            if ((value & ~pageFieldBits) != 0) {
                r_.report(finding::wrongPage, offset, value);
            }
            break;
        case Field::C0:
        case Field::C1:
        case Field::C2:
        case Field::C3:
            if (value >> 24U != drawingCode_) {
                r_.report(finding::wrongDrawingCode, offset, value, drawingCode_ << 24U);
            }
            break;
        case Field::window:
            if (value >> 20U != windowMark) {
                r_.report(finding::wrongWindow, offset, value);
            }
            break;
        default: break;  // any texture coordinates and any lookup table will do
        }
    }

    /// A line or a sprite in a strip carries fields that are no vertices. Its drawing code tells it
    /// from a triangle, but not every form has one.
    void vertexOutside(std::uint32_t offset, std::uint32_t value) {
        if (strip_ && group_.form->colours == 0) {
            r_.report(finding::stripVertexOutside, offset, value, vertexNum_);
        } else if ((drawingCode_ & drawing_code::kindMask) == drawing_code::face) {
            r_.report(finding::vertexOutside, offset, value, vertexNum_);
        }
    }

    Reading& r_;
    const PacketGroup& group_;
    bool strip_;
    std::uint32_t vertexNum_ = 0;
    std::uint32_t normalNum_ = 0;
    bool checkVertices_ = false;
    bool checkNormals_ = false;
    std::uint32_t drawingCode_ = 0;
};

}  // namespace

void checkPackets(Reading& r) {
    for (const PacketGroup& group : r.file.packetGroups) {
        if (group.fits) {
            PacketCheck(r, group).check();
        }
    }
}

}  // namespace mqf2vxb::reading
