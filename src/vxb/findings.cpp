#include "vxb/findings.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "format/format.h"

namespace mqf2vxb {
namespace {

constexpr std::array<const FindingKind*, findingKindNum> kinds{
    &finding::unevenLength,
    &finding::tooLong,
    &finding::endsInside,
    &finding::wrongId,
    &finding::notZero,
    &finding::bit31Missing,
    &finding::bit31Set,
    &finding::bit23Missing,
    &finding::bit23Set,
    &finding::nobodysWords,
    &finding::offsetMisses,
    &finding::offsetOutside,
    &finding::offsetOfNothing,
    &finding::chainLoops,
    &finding::chainGoesOn,
    &finding::blockMisses,
    &finding::blockTwice,
    &finding::blockDangles,
    &finding::headerUnused,
    &finding::countDisagrees,
    &finding::sizeDisagrees,
    &finding::unknownGlobalHeader,
    &finding::unknownType,
    &finding::typeTwice,
    &finding::groupDisagrees,
    &finding::groupOverlaps,
    &finding::groupOutside,
    &finding::stripDoesNotFit,
    &finding::vertexOutside,
    &finding::normalOutside,
    &finding::wrongPage,
    &finding::wrongWindow,
    &finding::wrongDrawingCode,
    &finding::imagesDiffer,
    &finding::oddBlock,
    &finding::wrongOffset,
    &finding::normalsUnowned,
    &finding::parentMisses,
    &finding::parentLoops,
    &finding::animatedMisses,
    &finding::animatedOutside,
    &finding::startUnresolved,
    &finding::stepOutside,
    &finding::unknownControl,
    &finding::keyFrameTypeOutside,
    &finding::keyFrameOutside,
    &finding::keyFramePastEnd,
    &finding::keyFramesOverlap,
    &finding::imageOffset,
    &finding::unreadable,
    &finding::stripVertexOutside,
    &finding::stripNormalOutside,
};

constexpr bool numbersAscend() {
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        if (kinds[i]->number != i + 1) {
            return false;
        }
    }
    return true;
}
static_assert(numbersAscend());

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

std::string FindingKind::code() const {
    const std::string digits = std::to_string(number);
    return "VXB" + std::string(3 - std::min<std::size_t>(digits.size(), 3), '0') + digits;
}

std::span<const FindingKind* const> findingKinds() { return kinds; }

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
           (kind->severity == Severity::error ? ": error " : ": warning ") + kind->code() + ": " +
           text();
}

void Findings::add(const Finding& finding) {
    if (counts_[finding.kind->number]++ < keptPerKind) {
        kept_.push_back(finding);
    }
}

void Findings::sort() {
    std::stable_sort(kept_.begin(), kept_.end(),
                     [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
}

std::size_t Findings::count(const FindingKind& kind) const { return counts_[kind.number]; }

std::size_t Findings::count(Severity severity) const {
    std::size_t sum = 0;
    for (const FindingKind* kind : kinds) {
        sum += kind->severity == severity ? count(*kind) : 0;
    }
    return sum;
}

}  // namespace mqf2vxb
