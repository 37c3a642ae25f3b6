#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include <fmt/core.h>
#include <fmt/ranges.h>

#include "format/format.h"
#include "vxbtool/diff/compare.h"

namespace vxbtool::diff {
namespace {

using namespace mqf2vxb;

std::string parentName(const std::optional<std::uint32_t>& parent) {
    return parent ? fmt::format("coordinate {}", *parent) : "none";
}

/// The block table has an offset for each coordinate with objects.
bool hasObjects(const VxbFile& file, std::size_t coordinate) {
    const std::size_t word = format::fileHeaderSize + 1 + coordinate;
    return word < file.words.size() && file.words[word] != 0;
}

}  // namespace

void compareCoordinates(const VxbFile& before, const VxbFile& after, Changes& changes) {
    const std::size_t common = std::min(before.coordinates.size(), after.coordinates.size());
    for (std::size_t i = 0; i < common; ++i) {
        const Coordinate& one = before.coordinates[i];
        const Coordinate& other = after.coordinates[i];
        const std::string place = fmt::format("coordinate {}", i);
        const auto compare = [&](ChangeKind kind, const char* what, const auto& a, const auto& b) {
            if (a != b) {
                changes.add(
                    kind, place,
                    fmt::format("{} ({}) -> ({})", what, fmt::join(a, ", "), fmt::join(b, ", ")));
            }
        };
        compare(ChangeKind::coordinateMatrix, "matrix", one.matrix, other.matrix);
        compare(ChangeKind::coordinateTranslation, "translation", one.translation,
                other.translation);
        compare(ChangeKind::coordinateAngles, "angles at rest", one.extra, other.extra);
        if (one.namedParent != other.namedParent) {
            changes.add(ChangeKind::coordinateParent, place,
                        fmt::format("parent {} -> {}", parentName(one.namedParent),
                                    parentName(other.namedParent)));
        }
        if (hasObjects(before, i) != hasObjects(after, i)) {
            changes.add(ChangeKind::coordinateObjects, place,
                        hasObjects(after, i) ? "has objects now" : "has no objects any more");
        }
    }
    for (std::size_t i = common; i < before.coordinates.size(); ++i) {
        changes.add(ChangeKind::coordinateRemoved, fmt::format("coordinate {}", i), "removed");
    }
    for (std::size_t i = common; i < after.coordinates.size(); ++i) {
        changes.add(ChangeKind::coordinateAdded, fmt::format("coordinate {}", i),
                    fmt::format("added under {}", after.coordinates[i].parent
                                                      ? parentName(after.coordinates[i].parent)
                                                      : "no other"));
    }
}

}  // namespace vxbtool::diff
