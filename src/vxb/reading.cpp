#include "vxb/reading.h"

#include <algorithm>

#include "format/format.h"
#include "vxb/word_names.h"

namespace mqf2vxb::reading {

std::uint32_t Reading::take(Part part, std::uint32_t index, std::uint64_t words,
                            std::string_view name, std::uint32_t limit) {
    const std::uint32_t room = limit > cursor_ ? limit - cursor_ : 0;
    const auto taken = static_cast<std::uint32_t>(std::min<std::uint64_t>(words, room));
    if (taken < words) {
        report(finding::endsInside, cursor_, taken,
               static_cast<std::uint32_t>(std::min<std::uint64_t>(words, UINT32_MAX)), name);
    }
    if (taken > 0) {
        file.regions.push_back({part, index, cursor_, taken});
        cursor_ += taken;
    }
    return taken;
}

void Reading::skipTo(std::uint32_t offset) {
    offset = std::min(offset, end());
    if (offset > cursor_) {
        report(finding::nobodysWords, cursor_, offset - cursor_);
        file.regions.push_back({Part::unknown, 0, cursor_, offset - cursor_});
        cursor_ = offset;
    }
}

void Reading::report(const FindingKind& kind, std::uint32_t offset, std::uint32_t found,
                     std::optional<std::uint32_t> expected, std::string_view word) {
    file.findings.add({&kind, offset, found, expected, word});
}

void Reading::checkZero(std::uint32_t offset, std::string_view word) {
    if (at(offset) != 0) {
        report(finding::notZero, offset, at(offset), 0, word);
    }
}

void Reading::checkHighZero(std::uint32_t offset, std::string_view word) {
    if (at(offset) >> 16U != 0) {
        report(finding::notZero, offset, at(offset) >> 16U, 0, word);
    }
}

void Reading::checkOffset(std::uint32_t offset, std::string_view word, std::uint32_t expected) {
    const std::uint32_t found = at(offset);
    if (found == expected) {
        return;
    }
    if (expected == 0) {
        report(finding::offsetOfNothing, offset, found, expected, word);
    } else if ((found ^ expected) == format::bit31) {
        const bool missing = (expected & format::bit31) != 0;
        report(missing ? finding::bit31Missing : finding::bit31Set, offset, found, expected, word);
    } else {
        report(finding::offsetMisses, offset, found, expected, word);
    }
}

void Reading::checkChainEnd(std::uint32_t offset) {
    const std::uint32_t found = at(offset);
    if (found == format::endOfChain) {
        return;
    }
    const FindingKind& kind = found <= offset ? finding::chainLoops : finding::chainGoesOn;
    report(kind, offset, found, format::endOfChain, word_name::nextPrimitivePointer);
}

void Reading::checkCount(std::uint32_t offset, std::string_view word, std::uint32_t count,
                         std::uint32_t expected) {
    if (count != expected) {
        report(finding::countDisagrees, offset, count, expected, word);
    }
}

void Reading::checkBit31(std::uint32_t offset, std::string_view word) {
    if ((at(offset) & format::bit31) == 0) {
        report(finding::bit31Missing, offset, at(offset), at(offset) | format::bit31, word);
    }
}

std::optional<std::uint32_t> Reading::top(GlobalHeaderKind kind, std::uint32_t word) const {
    const std::optional<GlobalHeader>& header = file.globalHeader(kind);
    if (!header || word >= header->words || at(header->offset + word) == 0) {
        return std::nullopt;
    }
    return at(header->offset + word) & ~format::bit31;
}

void Reading::checkTop(GlobalHeaderKind kind, std::uint32_t word,
                       std::optional<std::uint32_t> target) {
    const std::optional<GlobalHeader>& header = file.globalHeader(kind);
    if (header && word < header->words) {
        checkOffset(header->offset + word, globalHeaderWord(kind, word),
                    target ? *target | format::bit31 : 0);
    }
}

}  // namespace mqf2vxb::reading
