#include "vxb/findings.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "format/format.h"

namespace mqf2vxb {
namespace {

/// The place of a kind in the catalogue.
std::size_t placeOf(const FindingKind& kind) {
    return static_cast<std::size_t>(&kind - findingKinds.data());
}

std::string hexadecimal(std::uint32_t value) {
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(value));
    return text.data();
}

/// The value that a name in braces stands for.
std::string valueText(const Finding& finding, std::string_view name) {
    if (name == "word") {
        return std::string(finding.word);
    }
    const std::uint32_t value =
        name.substr(0, 5) == "found" ? finding.found : finding.expected.value_or(0);
    if (name.ends_with(":x")) {
        return hexadecimal(value);
    }
    return std::to_string(name.ends_with(":o") ? value & ~format::bit31 : value);
}

}  // namespace

std::string Finding::text() const {
    std::string result;
    std::string_view rest = kind->text;
    for (std::size_t open = rest.find('{'); open != std::string_view::npos; open = rest.find('{')) {
        const std::size_t close = rest.find('}', open);
        result += rest.substr(0, open);
        result += valueText(*this, rest.substr(open + 1, close - open - 1));
        rest.remove_prefix(close + 1);
    }
    result += rest;
    return result;
}

std::string Finding::line() const {
    return "word " + std::to_string(offset) +
           (kind->severity == Severity::error ? ": error " : ": warning ") +
           std::string(kind->code) + ": " + text();
}

void Findings::add(const Finding& finding) {
    if (counts_[placeOf(*finding.kind)]++ < keptPerKind) {
        kept_.push_back(finding);
    }
}

void Findings::sort() {
    std::stable_sort(kept_.begin(), kept_.end(),
                     [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
}

std::size_t Findings::count(const FindingKind& kind) const { return counts_[placeOf(kind)]; }

std::size_t Findings::count(Severity severity) const {
    std::size_t sum = 0;
    for (const FindingKind& kind : findingKinds) {
        sum += kind.severity == severity ? count(kind) : 0;
    }
    return sum;
}

}  // namespace mqf2vxb
