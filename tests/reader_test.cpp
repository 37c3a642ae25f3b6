#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "reader/vxb_reader.h"
#include "reader/word_meaning.h"
#include "support/memory_files.h"

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
    DiskFileSystem disk;
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

/// The word with a name, counted among the words of that name.
struct Place {
    const char* name;
    std::size_t nth;
    std::uint32_t value;
};

/// Words of the small model and what is found when they are changed.
struct Damage {
    int code;
    std::vector<Place> places;
};

const std::vector<Damage> damages{
    {4, {{"ID", 0, 0x51}}},
    {5, {{"Flag", 0, 1}}},
    {5, {{"m22", 1, 0x10001}}},
    {5, {{"calculated vertex 1", 0, 7}}},
    {5, {{"shared normal 0 z", 0, 0x11000}}},
    {5, {{"T2", 0, 0x10504}}},
    {6, {{"Independent Vertex Top", 0, 159}}},
    {7, {{"Pre Primitive Top", 0, 0x800000BB}}},
    {8, {{"Type", 0, 0x8}}},
    {8, {{"Animation Type", 0, 0x03000000}}},
    {9, {{"Type", 1, 0x840051}}},
    {10, {{"Primitive Index", 1, 100}}},
    {11, {{"Primitive Global Header Top", 0, 71}}},
    {11, {{"Independent Primitive Top", 0, 0x80000087}}},
    {11, {{"Control Top", 0, 0x800000DB}}},
    {11, {{"Shared Vertex Top", 0, 0x800000A8}}},
    {11, {{"Calculated Shared Normal Top", 0, 0x80000000}}},
    {12, {{"Matrix Top", 0, 0x80001000}}},
    {12, {{"Clut Top", 0, 0}}},
    {13, {{"Type", 6, 0x02000000}}},
    {14, {{"Next Primitive Pointer", 1, 91}}},
    {14, {{"Next Primitive Pointer", 0, 91}}},
    {15, {{"Next Primitive Pointer", 1, 111}}},
    {16, {{"Coordinate1 Primitive Top", 0, 92}}},
    {16, {{"Coordinate1 Primitive Top", 0, 100}}},
    {17, {{"Coordinate2 Primitive Top", 0, 91}}},
    {18, {{"Coordinate0 Primitive Top", 0, 128}}},
    {19, {{"Coordinate1 Primitive Top", 0, 0}}},
    {20, {{"Block Number", 0, 6}}},
    {20, {{"Coordinate Number", 0, 4}}},
    {20, {{"Primitive Global Header Number", 0, 3}}},
    {20, {{"Type Number", 0, 0x80000003}}},
    {20, {{"Polygon Number, Size", 1, 0x80020002}}},
    {20, {{"Shared Vertex Number", 0, 2}}},
    {20, {{"Shared Vertex Number", 1, 1}}},
    {20, {{"Animation Packet Type Number", 0, 0x80000001}}},
    {20, {{"Image Number, Size", 0, 0x80020007}}},
    {21, {{"Index Number, Size", 0, 0x80020010}}},
    {21, {{"Independent Primitive Global Header Size", 0, 3}}},
    {22, {{"Image Primitive Global Header Size", 0, 9}, {"Clut Top", 0, 7}}},
    {23, {{"Type", 0, 0x00800020}}},
    {23, {{"Type", 0, 0x01800008}}},
    {24, {{"Animation Packet Type 1", 0, 0x03000011}}},
    {25, {{"Primitive Index", 1, 0}}},
    {26, {{"Type", 0, 0x00800009}}},
    {27, {{"Primitive Index", 1, 100}}},
    {36, {{"Primitive Index", 2, 100}}},
    {28, {{"polygons of a strip", 0, 7}}},
    {28, {{"polygons of a strip", 0, 0}}},
    {29, {{"V1, V2", 0, 0x00020007}}},
    {29, {{"N1, V1", 0, 0x00030001}}},
    {30, {{"N0, V0", 0, 2}}},
    {31, {{"T1, PAGE", 0, 0x1000E01F}}},
    {32, {{"Type", 1, 0x40251}}},
    {33, {{"C0", 0, 0x220080FF}}},
    {33, {{"C2", 0, 0x22090807}}},
    {34, {{"Type", 1, 0x40150}}},
    {36, {{"Shared Vertex Offset(dst)", 1, 5}}},
    {36, {{"Primitive Index", 1, 4}}},
    {37, {{"Shared Normal Number", 1, 1}}},
    {38, {{"parent", 1, 11}}},
    {39, {{"parent", 1, 50}}},
    {40, {{"Coordinate Pointer Offset, Coordinate Offset", 0, 0x04000016}}},
    {41, {{"Coordinate Pointer Offset, Coordinate Offset", 0, 0x0400003D}}},
    {42, {{"start step", 0, 0xFFFF0000}}},
    {43, {{"start step", 0, 0x00090000}}},
    {43, {{"step 2", 0, 0x80820005}}},
    {44, {{"step 3", 0, 0x40000000}}},
    {44, {{"step 3", 0, 0xC0830001}}},
    {45, {{"step 4", 0, 0x0200000D}}},
    {46, {{"step 4", 0, 0x01000010}}},
    {47, {{"step 4", 0, 0x0100000E}}},
    {48, {{"step 1", 0, 0x0106000C}}},
    {49, {{"pixels offset", 1, 9}}},
};

/// The words by their names, in the order of the file.
std::map<std::string, Words> offsetsByName(const VxbFile& file) {
    std::map<std::string, Words> offsets;
    describeWords(file,
                  [&](const WordMeaning& word) { offsets[word.name].push_back(word.offset); });
    return offsets;
}

TEST(Reader, NamesTheFaultOfADamagedFile) {
    const Words sound = smallWords();
    const VxbFile soundFile = readWords(sound);
    std::map<std::string, Words> offsets = offsetsByName(soundFile);
    std::set<int> seen;
    const auto expectMore = [&](const FindingKind& kind, const VxbFile& file, const VxbFile& than) {
        EXPECT_GT(file.findings.count(kind), than.findings.count(kind)) << kind.code() << "\n"
                                                                        << show(file);
        seen.insert(kind.number);
    };
    for (const Damage& damage : damages) {
        Words words = sound;
        for (const Place& place : damage.places) {
            SCOPED_TRACE(place.name);
            ASSERT_LT(place.nth, offsets[place.name].size());
            words[offsets[place.name][place.nth]] = place.value;
        }
        SCOPED_TRACE(damage.places.front().name);
        const FindingKind& kind = *findingKinds()[static_cast<std::size_t>(damage.code) - 1];
        expectMore(kind, readWords(words), soundFile);
    }
    expectMore(finding::unevenLength, readVxb(bytesOf(sound) + "x"), soundFile);
    expectMore(finding::endsInside, readVxb(bytesOf(sound).substr(0, 40)), soundFile);
    ModelFiles triangle;
    triangle.geo = "3 1 1;0 0 0;1 0 0;0 1 0;0 0 1;0 0 1 2 9 0 0 0 0";
    triangle.srf = "1;0 0 F C 1 2 3";
    Words plain = convertFiles(triangle).words();
    plain.push_back(0);
    expectMore(finding::oddBlock, readWords(plain), soundFile);
    for (const FindingKind* kind : findingKinds()) {
        EXPECT_TRUE(seen.contains(kind->number) || kind == &finding::tooLong ||
                    kind == &finding::unreadable)
            << kind->code();
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
    EXPECT_LE(file.findings.kept().size(), Findings::keptPerKind * findingKindNum);
}

}  // namespace
}  // namespace mqf2vxb::tests
