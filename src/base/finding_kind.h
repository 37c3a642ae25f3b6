#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mqf2vxb {

enum class Severity : std::uint8_t {
    warning,  ///< it is allowed, and surely not meant
    error,    ///< the file is not sound, or the model does not convert
};

/// One kind of finding of a catalogue. In the text, {name} stands for a value.
struct FindingKind {
    std::string_view code;  ///< stable, for instance "VXB012"; never given to another kind
    Severity severity;
    std::string_view text;
};

/// The kind with this code. A code that the catalogue does not have does not compile, so that every
/// kind that can be named stands in its catalogue.
template <std::size_t size>
consteval const FindingKind& findingKind(const std::array<FindingKind, size>& catalogue,
                                         std::string_view code) {
    for (const FindingKind& kind : catalogue) {
        if (kind.code == code) {
            return kind;
        }
    }
    throw "the catalogue does not have this code";
}

/// Whether each code stands once, in ascending order.
template <std::size_t size>
consteval bool codesAscend(const std::array<FindingKind, size>& catalogue) {
    return std::adjacent_find(catalogue.begin(), catalogue.end(),
                              [](const FindingKind& one, const FindingKind& next) {
                                  return one.code >= next.code;
                              }) == catalogue.end();
}

}  // namespace mqf2vxb
