#include <cctype>
#include <cstdint>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/random_model.h"
#include "vxb/vxb_reader.h"
#include "vxb/word_meaning.h"
#include "vxbtool/diff/changes.h"
#include "vxbtool/diff/compare.h"

namespace vxbtool {
namespace {

using diff::ChangeKind;
using diff::Changes;
using mqf2vxb::Severity;
using mqf2vxb::VxbFile;
using mqf2vxb::tests::bytesOf;
using mqf2vxb::tests::Words;

Changes changesBetween(const VxbFile& before, const VxbFile& after) {
    Changes changes(true);
    compareCoordinates(before, after, changes);
    comparePolygons(before, after, changes);
    compareMotions(before, after, changes);
    compareImages(before, after, changes);
    return changes;
}

/// How many things of a kind changed.
std::size_t sumOf(const Changes& changes, ChangeKind kind) {
    std::size_t sum = 0;
    for (const diff::Change& change : changes.kept()) {
        sum += change.kind == kind ? change.count : 0;
    }
    return sum;
}

VxbFile randomFile(std::uint32_t seed) {
    return mqf2vxb::readVxb(bytesOf(convertFiles(mqf2vxb::tests::randomModel(seed)).words()));
}

std::size_t polygonsOf(const VxbFile& file) {
    std::size_t number = 0;
    for (const mqf2vxb::PacketGroup& group : file.packetGroups) {
        number += group.polygons;
    }
    return number;
}

/// "vertex # x, y" for "vertex 12 x, y".
std::string withoutNumbers(const std::string& name) {
    std::string result;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool digit = std::isdigit(static_cast<unsigned char>(name[i])) != 0;
        if (!digit || (i > 0 && std::isalpha(static_cast<unsigned char>(name[i - 1])) != 0)) {
            result += name[i];
        } else if (!result.ends_with('#')) {
            result += '#';
        }
    }
    return result;
}

/// What becomes of the words of one name when one of their bits changes.
struct BitsOfName {
    std::uint32_t free = 0;       ///< bits that can change without an error, in one of the words
    std::set<std::string> kinds;  ///< what diff tells of these
};

/// A header may count fewer shared normals than there are: normals of coordinates without a header follow.
TEST(EveryBit, IsAnErrorOrADifference) {
    const Words sound = convertFiles(mqf2vxb::tests::smallModel()).words();
    const VxbFile before = mqf2vxb::readVxb(bytesOf(sound));
    std::map<std::string, BitsOfName> bits;
    describeWords(before, [&](const mqf2vxb::WordMeaning& word) {
        BitsOfName& ofName = bits[withoutNumbers(word.name)];
        for (unsigned bit = 0; bit < 32; ++bit) {
            Words words = sound;
            words[word.offset] ^= 1U << bit;
            const VxbFile after = mqf2vxb::readVxb(bytesOf(words));
            if (after.findings.count(Severity::error) != 0) {
                continue;
            }
            ofName.free |= 1U << bit;
            const Changes changes = changesBetween(before, after);
            if (changes.empty()) {
                ofName.kinds.emplace("nothing");
            }
            for (const diff::Change& change : changes.kept()) {
                ofName.kinds.emplace(nameOf(change.kind));
            }
        }
    });
    std::ostringstream actual;
    for (const auto& [name, ofName] : bits) {
        actual << name << ": " << std::hex << ofName.free;
        for (const std::string& kind : ofName.kinds) {
            actual << ' ' << kind;
        }
        actual << '\n';
    }
    std::ifstream file(MQF2VXB_TEST_DATA "/inspect/every_bit.txt");
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(actual.str(), expected);
}

TEST(Diff, TellsNothingOfEqualFilesAndTheSameBothWays) {
    constexpr std::pair<ChangeKind, ChangeKind> mirrored[] = {
        {ChangeKind::coordinateAdded, ChangeKind::coordinateRemoved},
        {ChangeKind::coordinateMatrix, ChangeKind::coordinateMatrix},
        {ChangeKind::coordinateTranslation, ChangeKind::coordinateTranslation},
        {ChangeKind::coordinateAngles, ChangeKind::coordinateAngles},
        {ChangeKind::coordinateParent, ChangeKind::coordinateParent},
        {ChangeKind::motionAdded, ChangeKind::motionRemoved},
        {ChangeKind::imageAdded, ChangeKind::imageRemoved},
    };
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const VxbFile one = randomFile(seed);
        const VxbFile other = randomFile(seed + 1);
        const Changes none = changesBetween(one, one);
        EXPECT_TRUE(none.empty()) << none.kept().front().text;
        const Changes there = changesBetween(one, other);
        const Changes back = changesBetween(other, one);
        for (const auto& [kind, mirror] : mirrored) {
            EXPECT_EQ(sumOf(there, kind), sumOf(back, mirror)) << nameOf(kind);
            EXPECT_EQ(sumOf(there, mirror), sumOf(back, kind)) << nameOf(mirror);
        }
        EXPECT_EQ(polygonsOf(one) + sumOf(there, ChangeKind::polygonAdded),
                  polygonsOf(other) + sumOf(there, ChangeKind::polygonRemoved));
        EXPECT_EQ(one.images.size() + sumOf(there, ChangeKind::imageAdded),
                  other.images.size() + sumOf(there, ChangeKind::imageRemoved));
    }
}

/// A part that is told as one is told as one polygon more, wherever it stands among the others.
TEST(Diff, OnePolygonMoreIsOnePolygonMore) {
    std::size_t told = 0;
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        mqf2vxb::tests::ModelFiles model = mqf2vxb::tests::randomModel(seed);
        if (!model.bnd.empty() || model.srf.starts_with("0;")) {
            continue;
        }
        const VxbFile before = mqf2vxb::readVxb(bytesOf(convertFiles(model).words()));
        const std::size_t rows = model.srf.find(';');
        const std::size_t end = model.srf.find(';', rows + 1);
        const std::string row = model.srf.substr(rows + 1, end - rows - 1);
        const std::size_t first = std::stoul(row);
        const std::string again = std::to_string(first) + row.substr(row.find(' '));
        for (const bool inFront : {false, true}) {
            mqf2vxb::tests::ModelFiles more = model;
            const std::string number = std::to_string(std::stoul(model.srf) + 1) + ";";
            const std::string others = model.srf.substr(rows + 1);
            const bool ended = others.ends_with(';');
            more.srf = inFront ? number + again + ";" + others
                               : number + others + (ended ? "" : ";") + again;
            const auto after = convertFiles(more);
            ASSERT_EQ(after.report, "") << "seed " << seed;
            const Changes changes =
                changesBetween(before, mqf2vxb::readVxb(bytesOf(after.words())));
            EXPECT_EQ(sumOf(changes, ChangeKind::polygonAdded), 1U) << "seed " << seed;
            for (const diff::Change& change : changes.kept()) {
                const bool expected = change.kind == ChangeKind::polygonAdded ||
                                      change.kind == ChangeKind::vertexNumber ||
                                      change.kind == ChangeKind::normalNumber ||
                                      // Which polygon comes first decides what a normal moves with.
                                      change.text.ends_with("got a normal of another coordinate");
                EXPECT_TRUE(expected) << "seed " << seed << ": " << change.text;
            }
            ++told;
        }
    }
    EXPECT_GT(told, 40U);
}

}  // namespace
}  // namespace vxbtool
