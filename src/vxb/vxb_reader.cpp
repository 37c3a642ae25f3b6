#include "vxb/vxb_reader.h"

#include <algorithm>

#include "format/format.h"
#include "vxb/reading.h"

namespace mqf2vxb {
namespace {

using reading::Reading;

constexpr std::size_t wordBytes = 4;

/// The words of a file, least significant byte first. Words that no offset reaches are left out.
void readWords(std::string_view bytes, VxbFile& file) {
    const std::size_t number = std::min<std::size_t>(bytes.size() / wordBytes, format::bit31 - 1);
    file.words.resize(number);
    const auto byte = [&](std::size_t i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i]));
    };
    for (std::size_t i = 0; i < number; ++i) {
        const std::size_t first = wordBytes * i;
        file.words[i] =
            byte(first) | byte(first + 1) << 8U | byte(first + 2) << 16U | byte(first + 3) << 24U;
    }
    const auto end = static_cast<std::uint32_t>(number);
    if (bytes.size() / wordBytes > number) {
        file.findings.add({&finding::tooLong, end, end, {}, {}});
    } else if (bytes.size() % wordBytes != 0) {
        const auto length =
            static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), UINT32_MAX));
        file.findings.add({&finding::unevenLength, end, length, {}, {}});
    }
}

void readSections(Reading& r) {
    if (!reading::readFileHeader(r)) {
        return;
    }
    reading::readCoordinates(r);
    reading::readGlobalHeaders(r);
    reading::readPrimitiveHeaders(r);
    reading::findLaterSections(r);
    reading::readPacketGroups(r);
    reading::readPoints(r);
    reading::readBlocks(r);
    reading::checkPackets(r);
    reading::readAnimation(r);
    reading::readImages(r);
}

}  // namespace

VxbFile readVxb(std::string_view bytes) {
    VxbFile file;
    readWords(bytes, file);
    Reading r(file);
    readSections(r);
    r.skipTo(r.end());
    file.findings.sort();
    return file;
}

}  // namespace mqf2vxb
