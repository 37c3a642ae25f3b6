#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <set>
#include <string>

#include "base/diagnostics.h"
#include "support/memory_files.h"
#include "support/model_cases.h"
#include "support/random_model.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
#include "vxbtool/model_text/model_files_writer.h"
#include "vxbtool/shared/in_memory.h"
#include "vxbtool/unpack/unpack_model.h"

namespace vxbtool {
namespace {

using mqf2vxb::VxbFile;
using namespace mqf2vxb::tests;

/// What a VXB file becomes when it is unpacked and converted again.
std::string comesBack(const std::string& bytes) {
    const unpack::UnpackedModel model = unpack::unpackModel(mqf2vxb::readVxb(bytes));
    MemoryFiles files;
    model_text::writeModelFiles(model.text, "", "u", files);
    mqf2vxb::RunOptions options;
    options.imageOutput = !model.withoutImages;
    try {
        return convertInMemory("u.mqf", options, files);
    } catch (const mqf2vxb::Report& report) {
        return report.text();
    }
}

/// The first word that differs, or the report in the place of the words.
std::string difference(const std::string& bytes, const std::string& again) {
    if (again.starts_with('\n')) {
        return again;
    }
    const VxbFile file = mqf2vxb::readVxb(bytes);
    const VxbFile other = mqf2vxb::readVxb(again);
    const auto [at, otherAt] = std::ranges::mismatch(file.words, other.words);
    const auto offset = static_cast<std::uint32_t>(at - file.words.begin());
    return placeName(file, offset) + ", " + placeName(other, offset);
}

/// Unpacked again, a file is the same; says which one is not.
void expectToComeBack(const std::string& bytes, const std::string& what) {
    const std::string again = comesBack(bytes);
    EXPECT_TRUE(again == bytes) << what << ": " << difference(bytes, again);
}

/// The few models whose words are not found again: the file does not tell of which type a key frame is
/// that nothing names, or, where more than one polygon may have, which one put a shared normal into its
/// coordinate last.
constexpr std::array<std::uint32_t, 1> notFound{172};

TEST(Unpack, RandomModelsComeBackWordForWord) {
    constexpr std::uint32_t models = 300;
    std::set<const mqf2vxb::PacketForm*> forms;
    for (std::uint32_t seed = 1; seed <= models; ++seed) {
        mqf2vxb::RunOptions options;
        options.imageOutput = seed % 5 != 0;
        const std::string bytes = convertFiles(randomModel(seed), options).outputs.at("m.vxb");
        const std::string again = comesBack(bytes);
        const bool known = std::ranges::find(notFound, seed) != notFound.end();
        EXPECT_EQ(again != bytes, known) << "seed " << seed << ": " << difference(bytes, again);
        for (const mqf2vxb::PacketGroup& group : mqf2vxb::readVxb(bytes).packetGroups) {
            forms.insert(group.form);
        }
    }
    EXPECT_EQ(forms.size(), 66U);
}

TEST(Unpack, ModelsOfTheConvertersCasesComeBackWordForWord) {
    std::size_t number = 0;
    for (const char* const subject :
         {"images", "layout", "motions", "organisation", "strips", "textures"}) {
        for (const ModelCase& c : readCases(subject + std::string(".txt"))) {
            mqf2vxb::RunOptions options = c.options;
            options.hexOutput = false;
            const Conversion done = convertFiles(c.files, options);
            // A mistyped shading letter, "X", lets a flat polygon name several normals.
            if (done.report.empty() && c.name.find("shading X") == std::string::npos) {
                expectToComeBack(done.outputs.begin()->second, subject + (": " + c.name));
                ++number;
            }
        }
    }
    EXPECT_GT(number, 90U);
}

/// Every value that a half of a word can have is written as a number that makes it again.
TEST(Unpack, NumbersMakeTheSameWordsAgain) {
    constexpr std::uint32_t halves = 0x10000;
    constexpr std::uint32_t points = halves / 3 + 1;
    ModelFiles model;
    model.geo = std::to_string(points) + " " + std::to_string(points) + " 1;";
    for (const double unit : {1.0, 4096.0}) {
        for (std::uint32_t i = 0; i < 3 * points; ++i) {
            const std::int32_t value = static_cast<std::int32_t>(i % halves) - 0x8000;
            model.geo += std::to_string(value / unit) + (i % 3 == 2 ? ";" : " ");
        }
    }
    model.geo += "0 0 1 2 0 0 0 0 0;";
    model.srf = "1;0 0 F C 1 2 3;";
    Words words = convertFiles(model).words();
    // The normals as they may be in any file, whatever text can make of them.
    const VxbFile file = mqf2vxb::readVxb(bytesOf(words));
    for (std::uint32_t i = 0; i < points; ++i) {
        words[file.normals.independent.offset + 2 * i] = 3 * i % halves | (3 * i + 1) % halves
                                                                              << 16U;
        words[file.normals.independent.offset + 2 * i + 1] = (3 * i + 2) % halves;
    }
    expectToComeBack(bytesOf(words), "all halves");
}

/// Vertices that lie in two coordinates by turns make lists that no line holds.
TEST(Unpack, LongListsOfVerticesAreDividedIntoLines) {
    constexpr std::uint32_t vertices = 600;
    ModelFiles model;
    model.geo = std::to_string(vertices) + " 0 " + std::to_string(vertices / 3) + ";" +
                repeated(vertices, "1 2 3;");
    std::array<std::string, 2> lists;
    for (std::uint32_t v = 0; v < vertices; ++v) {
        lists[v % 2] += (v % 20 < 2 ? ";" : " ") + std::to_string(v);
        if (v % 6 < 2) {
            model.geo += "0 " + std::to_string(v) + " " + std::to_string(v + 2) + " " +
                         std::to_string(v + 4) + " 0 0 0 0 0;";
        }
    }
    model.srf = "1;0-" + std::to_string(vertices / 3 - 1) + " 1 F C 1 2 3;";
    model.frm = "=NULL;2;" + repeated(2, "1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 0;") + "0 300" + lists[0] +
                ";1 300" + lists[1] + ";";
    const Conversion done = convertFiles(model);
    ASSERT_EQ(done.report, "");
    expectToComeBack(done.outputs.at("m.vxb"), "vertices by turns");
}

/// A sound file with a changed word becomes a model too, whether the converter could have written it or
/// not: the model converts or is refused, and what it makes comes back again.
/// Each goes back to its first step, the first one to step 0.
TEST(Unpack, MotionsThatGoRoundStayWhole) {
    const auto motion = [](const std::string& move, const std::string& turn) {
        return "COORDINATE;1;0 0 a;a;SEQ 10 ps0r0t1 0;SEQ 10 ps0r1t0 0;GOTO a 0x0 0x0;TYPE ps0r0t1;" +
               move + ";TYPE ps0r1t0;" + turn;
    };
    ModelFiles model;
    model.geo = "3 0 1;0;1;0 1;0 0 1 2";
    model.srf = "1;0 1 F C 1 2 3";
    model.frm = "=NULL;1;4096 0 0 0 4096 0 0 0 4096 0 0 0 0 0 0 0;0 3 0-2";
    model.clp = {motion("1 2 3", "100 0 0"), motion("4 5 6", "700 0 0"), motion("7 8 9", "9 9 9")};
    expectToComeBack(convertFiles(model).outputs.at("m.vxb"), "from the first step");
    for (std::string& text : model.clp) {  // and with a step that is shown once
        text.replace(text.find("a;SEQ 10 ps0r0t1 0;"), 19, "a;SEQ 10 ps0r0t1 0;b;");
        text.replace(text.find("GOTO a"), 6, "SEQ 10 ps0r0t1 1;GOTO b");
        text.replace(text.find(";TYPE ps0r1t0"), 1, ";5 5 5;");
    }
    expectToComeBack(convertFiles(model).outputs.at("m.vxb"), "from a later step");
}

TEST(Unpack, FilesThatNoConverterWroteAreUnpackedAsFarAsTheyGo) {
    std::mt19937 random(3);
    std::size_t sound = 0;
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        const Words original = convertFiles(randomModel(seed)).words();
        for (int damage = 0; damage < 6; ++damage) {
            Words words = original;
            const std::size_t at = random() % words.size();
            words[at] ^=
                damage % 2 == 0 ? 1U << random() % 32 : static_cast<std::uint32_t>(random());
            const std::string bytes = bytesOf(words);
            if (mqf2vxb::readVxb(bytes).findings.count(mqf2vxb::Severity::error) > 0) {
                continue;
            }
            ++sound;
            const std::string made = comesBack(bytes);
            if (!made.starts_with('\n')) {
                EXPECT_EQ(mqf2vxb::readVxb(made).findings.count(mqf2vxb::Severity::error), 0U)
                    << "seed " << seed << ", word " << at;
            }
        }
    }
    EXPECT_GT(sound, 300U);
}

}  // namespace
}  // namespace vxbtool
