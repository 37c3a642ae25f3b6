#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "files/disk_files.h"
#include "support/memory_files.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"

namespace mqf2vxb::tests {
namespace {

std::string show(const VxbFile& file) {
    std::string text;
    for (const Finding& finding : file.findings.kept()) {
        text += finding.line() + "\n";
    }
    return text;
}

Words smallWords() { return convertFiles(smallModel()).words(); }
VxbFile readWords(const Words& words) { return readVxb(bytesOf(words)); }

TEST(Reader, FindsNoErrorInConvertedFiles) {
    EXPECT_EQ(
        show(readWords(smallWords())),
        "word 203: warning VXB042: the animated coordinate has no step to start with (65535)\n");
    const auto without = [](auto&&... parts) {
        ModelFiles model = smallModel();
        ((model.*parts = {}), ...);
        return convertFiles(model);
    };
    RunOptions noImages;
    noImages.imageOutput = false;
    for (const Conversion& done :
         {without(&ModelFiles::clp), without(&ModelFiles::bnd), without(&ModelFiles::axs),
          without(&ModelFiles::frm, &ModelFiles::sqx, &ModelFiles::axs, &ModelFiles::clp),
          without(&ModelFiles::srf, &ModelFiles::bnd), convertFiles(smallModel(), noImages)}) {
        ASSERT_EQ(done.report, "");
        const VxbFile file = readWords(done.words());
        EXPECT_EQ(file.findings.count(Severity::error), 0U) << show(file);
    }
    DiskInputFiles disk;
    MemoryFileSystem examples{{}};
    for (const auto& entry : std::filesystem::directory_iterator(MQF2VXB_EXAMPLES)) {
        examples.inputs[entry.path().filename()] = disk.read(entry.path())->text();
    }
    for (const char* const name : {"crawler.mqf", "crawler_groups.mqf", "crawler_strips.mqf"}) {
        examples.inputs["m.mqf"] = examples.inputs.at(name);
        const VxbFile file = readWords(convertFiles(examples).words());
        EXPECT_EQ(show(file), "") << name;
        EXPECT_GT(file.packetGroups.size(), 10U);
    }
}

/// The words by their names, in the order of the file.
std::map<std::string, Words> offsetsByName(const VxbFile& file) {
    std::map<std::string, Words> offsets;
    describeWords(file,
                  [&](const WordMeaning& word) { offsets[word.name].push_back(word.offset); });
    return offsets;
}

/// The small model's file damaged as a case of data/inspect/damage.txt says, and what is reported.
struct Damage {
    std::string title;
    Words words;
    std::string report;
};

std::vector<Damage> readDamages(const Words& sound) {
    std::ifstream file(MQF2VXB_TEST_DATA "/inspect/damage.txt");
    std::map<std::string, Words> offsets = offsetsByName(readWords(sound));
    std::vector<Damage> damages;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("= ")) {
            damages.push_back({line, sound, ""});
            std::istringstream changes(line.substr(2));
            std::string name;
            for (std::size_t value = 0, nth = 0; changes >> std::hex >> value >> nth;) {
                std::getline(changes >> std::ws, name, ';');
                damages.back().words.at(offsets[name].at(nth)) = static_cast<std::uint32_t>(value);
            }
        } else if (!line.starts_with("#")) {
            damages.back().report += line + "\n";
        }
    }
    return damages;
}

TEST(Reader, NamesTheFaultOfADamagedFile) {
    const Words sound = smallWords();
    std::string reports =
        show(readVxb(bytesOf(sound) + "x")) + show(readVxb(bytesOf(sound).substr(0, 40)));
    for (const Damage& damage : readDamages(sound)) {
        const std::string report = show(readWords(damage.words));
        EXPECT_EQ(report, damage.report) << damage.title;
        reports += report;
    }
    ModelFiles triangle;
    triangle.geo = "3 1 1;0 0 0;1 0 0;0 1 0;0 0 1;0 0 1 2 9 0 0 0 0";
    triangle.srf = "1;0 0 F C 1 2 3";
    Words plain = convertFiles(triangle).words();
    plain.push_back(0);
    reports += show(readWords(plain));
    ModelFiles strip;  // a smooth one with a flat sprite of 70 x 80
    strip.geo = "4 1 2;0;0;0;0;0 0 1;0 0 1 2 0 0 0 0 0;3 3 70 80 0 0 9 9 0";
    strip.srf = "2;0 0 G T 0;1 0 F T 0";
    strip.bnd = "1;2 0 1";
    strip.images = {image(2, {0, 0})};
    reports += show(readWords(convertFiles(strip).words()));
    for (const FindingKind& kind : findingKinds) {
        EXPECT_TRUE(reports.find(kind.code) != std::string::npos || &kind == &finding::tooLong ||
                    &kind == &finding::unreadable)
            << kind.code;
    }
}

TEST(Reader, StandsAnyBytes) {
    const Words sound = smallWords();
    const std::string bytes = bytesOf(sound);
    // A word for every word of the file, in order, whatever the reader made of it.
    const auto expectAllDescribed = [](const VxbFile& file) {
        std::uint32_t next = 0;
        describeWords(file, [&](const WordMeaning& word) { EXPECT_EQ(word.offset, next++); });
        EXPECT_EQ(next, file.words.size());
    };
    for (std::size_t length = 0; length <= bytes.size(); ++length) {
        // A copy of its own, so that reading behind it is noticed.
        expectAllDescribed(readVxb(std::string(bytes, 0, length)));
    }
    for (std::size_t i = 0; i < sound.size(); ++i) {
        for (const std::uint32_t value :
             {0U, 1U, sound[i] + 1, sound[i] - 1, sound[i] ^ 0x80000000U, 0x7FFFFFFFU, 0x80000000U,
              0x80FFFFFFU, 0xFFFFFFFFU, static_cast<std::uint32_t>(i)}) {
            Words words = sound;
            words[i] = value;
            expectAllDescribed(readWords(words));
        }
    }
}

TEST(Reader, KeepsItsReportShort) {
    Words words(100000, 0xFFFFFFFF);
    const Words sound = smallWords();
    std::copy_n(sound.begin(), 200, words.begin());
    const VxbFile file = readWords(words);
    EXPECT_GT(file.findings.count(Severity::error), 0U);
    EXPECT_LE(file.findings.kept().size(), Findings::keptPerKind * findingKinds.size());
}

}  // namespace
}  // namespace mqf2vxb::tests
