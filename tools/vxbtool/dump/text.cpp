// The words of a VXB file for people.

#include "vxb/word_meaning.h"
#include "vxbtool/dump/dump.h"
#include "vxbtool/shared/counted.h"
#include "vxbtool/shared/text_output.h"

namespace vxbtool {
namespace {

using namespace mqf2vxb;

/// Writes the findings in the order of the file, each once the word to blame was passed.
class FindingLines {
public:
    FindingLines(const Findings& findings, TextOutput& output)
        : rest_(findings.kept()), output_(output) {}

    /// Passes over the findings of words before `offset`, which are not shown.
    void skipTo(std::uint32_t offset) {
        while (!rest_.empty() && rest_.front().offset < offset) {
            rest_ = rest_.subspan(1);
        }
    }
    void writeThrough(std::uint32_t offset) {
        for (; !rest_.empty() && rest_.front().offset <= offset; rest_ = rest_.subspan(1)) {
            const Finding& finding = rest_.front();
            output_.format("{:>10}^ {}: {} [{}]\n", "",
                           finding.kind->severity == Severity::error ? "error" : "warning",
                           finding.text(), finding.kind->code);
        }
    }

private:
    std::span<const Finding> rest_;
    TextOutput& output_;
};

void writeWord(const WordMeaning& word, TextOutput& output) {
    output.format("{:>8}  {:08x}", word.offset, word.value);
    if (!word.meaning.empty()) {
        output.format("  {:<28}  {}\n", word.name, word.meaning);
    } else {
        output.format("{}{}\n", word.name.empty() ? "" : "  ", word.name);
    }
}

}  // namespace

void writeDump(const VxbFile& file, const WantedSections& wanted, TextOutput& output) {
    FindingLines findings(file.findings, output);
    for (const Region& region : wantedRegions(file, wanted)) {
        findings.skipTo(region.offset);
        output.format("# {}: {}", sectionName(sectionOf(region.part)), regionName(region));
        if (region.part == Part::packetGroup) {
            const PacketGroup& group = file.packetGroups[region.index];
            output.format(", {}, {}", counted(group.polygons, "polygon"), formName(group.code));
        }
        output.put("\n");
        describeRegion(file, region, [&](const WordMeaning& word) {
            writeWord(word, output);
            findings.writeThrough(word.offset);
        });
    }
    // A file that is cut short is to blame at its end.
    findings.skipTo(static_cast<std::uint32_t>(file.words.size()));
    findings.writeThrough(UINT32_MAX);
}

}  // namespace vxbtool
