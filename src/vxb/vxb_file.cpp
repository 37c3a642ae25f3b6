#include "vxb/vxb_file.h"

#include <algorithm>

namespace mqf2vxb {
namespace {

constexpr std::array<std::string_view, sectionNum> sectionNames{
    "header",  "block-table", "coordinates", "global-headers", "primitive-headers",
    "packets", "vertices",    "normals",     "animation",      "images",
    "none"};

}  // namespace

std::string_view sectionName(Section section) {
    return sectionNames[static_cast<std::size_t>(section)];
}

Section sectionOf(Part part) {
    switch (part) {
    case Part::fileHeader: return Section::header;
    case Part::blockTable: return Section::blockTable;
    case Part::coordinateNumber:
    case Part::coordinate: return Section::coordinates;
    case Part::globalHeaderNumber:
    case Part::globalHeader: return Section::globalHeaders;
    case Part::primitiveHeader: return Section::primitiveHeaders;
    case Part::packetGroup: return Section::packets;
    case Part::independentVertices:
    case Part::sharedVertices:
    case Part::calculatedVertices: return Section::vertices;
    case Part::independentNormals:
    case Part::sharedNormals:
    case Part::calculatedNormals: return Section::normals;
    case Part::animationHeader:
    case Part::motion:
    case Part::animatedCoordinate:
    case Part::keyFrameTypes:
    case Part::controlWords:
    case Part::keyFrames: return Section::animation;
    case Part::imageHeader:
    case Part::imageType:
    case Part::imageEntry:
    case Part::pixels:
    case Part::cluts: return Section::images;
    case Part::unknown: break;
    }
    return Section::none;
}

Point VxbFile::point(const PointBlock& block, std::uint32_t index) const {
    const std::uint32_t first = words[block.offset + 2 * index];
    const std::uint32_t second = words[block.offset + 2 * index + 1];
    return {static_cast<std::int16_t>(first), static_cast<std::int16_t>(first >> 16U),
            static_cast<std::int16_t>(second)};
}

const Region* VxbFile::regionAt(std::uint32_t offset) const {
    const auto behind =
        std::upper_bound(regions.begin(), regions.end(), offset,
                         [](std::uint32_t o, const Region& region) { return o < region.offset; });
    if (behind == regions.begin() || offset >= (behind - 1)->end()) {
        return nullptr;
    }
    return &*(behind - 1);
}

std::vector<SectionExtent> VxbFile::sections() const {
    std::vector<SectionExtent> result;
    for (const Region& region : regions) {
        const Section section = sectionOf(region.part);
        if (result.empty() || result.back().section != section) {
            result.push_back({section, region.offset, 0});
        }
        result.back().words += region.words;
    }
    return result;
}

const KeyFrameForm* keyFrameForm(const Animation& animation, std::uint32_t typeIndex) {
    return typeIndex < animation.types.size() ? findKeyFrameForm(animation.types[typeIndex])
                                              : nullptr;
}

bool hasListedForm(std::uint32_t typeIndex, const KeyFrameForm& form, std::size_t room) {
    return typeIndex > 0 || form.words() <= room;
}

}  // namespace mqf2vxb
