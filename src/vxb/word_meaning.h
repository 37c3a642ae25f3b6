#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "vxb/vxb_file.h"

namespace mqf2vxb {

/// One word of a file and what it says.
struct WordMeaning {
    std::uint32_t offset;
    std::uint32_t value;
    std::string name;     ///< for instance "Control Top" or "V1, V2"; may be empty
    std::string meaning;  ///< the decoded value; empty when there is nothing to add
};

using WordVisitor = std::function<void(const WordMeaning&)>;

/// Calls `visit` for every word of a region, in order.
void describeRegion(const VxbFile& file, const Region& region, const WordVisitor& visit);

/// Calls `visit` for every word of the file, in order.
void describeWords(const VxbFile& file, const WordVisitor& visit);

/// What a region is, for instance "coordinate 3".
std::string regionName(const Region& region);

/// "independent", "shared", "animation" or "image".
std::string_view globalHeaderName(GlobalHeaderKind kind);

/// What a type code of polygons draws, for instance "shared lit smooth triangles"; "unknown type"
/// for a code without a form.
std::string formName(PrimitiveTypeCode type);

/// What stands at an offset, for instance "coordinate 3" or "packet group 2"; with the distance
/// when the offset leads behind its first word.
std::string placeName(const VxbFile& file, std::uint32_t offset);

/// The name of a packet field, for instance "N0"; empty for a zero field.
std::string_view fieldName(Field field);

}  // namespace mqf2vxb
