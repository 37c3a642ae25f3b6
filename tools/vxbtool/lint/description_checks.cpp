#include "vxbtool/lint/description_checks.h"

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/seeded_hash.h"
#include "text/scan.h"
#include "vxbtool/shared/closest.h"

namespace vxbtool::lint {
namespace {

constexpr std::string_view slotStart = "TEX[";

const std::array<std::string, 8> keys{"GEO", "SRF", "FRM", "BND", "AXS", "SQD", "NTEX", "NCLP"};

std::string_view keyOf(const TracedLine& line) {
    return line.text.substr(0, line.text.find_first_of("=["));
}

}  // namespace

void checkDescription(const TracedFile& mqf, std::span<const TracedLine> lines,
                      Findings& findings) {
    std::unordered_map<std::string_view, const TracedLine*, mqf2vxb::SeededHash> latest;
    for (const TracedLine& line : lines) {
        const SourcePlace place{&mqf, line.offset};
        const std::string_view key = keyOf(line);
        if (!line.scanned) {
            std::string_view rest = key;
            findings.add(kind::unknownKey, wordPlace(mqf, line, 0),
                         fmt::arg("hint", didYouMean(mqf2vxb::scanWord(rest), keys)));
            continue;
        }
        if (line.text.substr(key.size()).starts_with('[')) {
            continue;
        }
        if (key == "SQD") {
            findings.add(kind::groupKey, place);
        }
        const TracedLine*& known = latest[key];
        if (known != nullptr) {
            findings.add(kind::keyAgain, {&mqf, known->offset}, fmt::arg("key", key));
        }
        known = &line;
    }
}

std::vector<std::size_t> imageLines(const TracedFile& mqf, std::size_t count) {
    std::vector<std::size_t> offsets(count);
    for (const TracedLine& line : mqf.lines) {
        if (line.scanned && line.text.starts_with(slotStart)) {
            std::string_view number = line.text.substr(slotStart.size());
            std::int32_t slot = 0;
            mqf2vxb::scanInteger(number, slot);
            // A table that a second "NTEX=" replaced may have had more slots.
            if (slot >= 0 && static_cast<std::size_t>(slot) < count) {
                offsets[static_cast<std::size_t>(slot)] = line.offset;
            }
        }
    }
    return offsets;
}

}  // namespace vxbtool::lint
