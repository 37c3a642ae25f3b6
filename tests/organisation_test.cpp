#include <gtest/gtest.h>

#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

constexpr std::uint32_t bit31 = 0x80000000;
constexpr std::uint32_t none = 0xFFFFFFFF;

/// `number` coordinates without matrix, all roots.
std::string roots(int number) {
    std::string text = std::to_string(number) + ";";
    for (int i = 0; i < number; ++i) {
        text += "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 " + std::to_string(i) + ";";
    }
    return text;
}

/// The primitive headers and packets.
Words headersAndPackets(const Conversion& done) {
    EXPECT_EQ(done.report, "");
    return between(done.hex(), "/* Next Primitive Pointer */", "/* Vertex Top */");
}

/// x of every vertex that was written, shared and calculated ones included.
std::vector<int> writtenX(const Conversion& done, std::string_view from = "/* Vertex Top */",
                          std::string_view to = {}) {
    std::vector<int> result;
    const Words words = between(done.hex(), from, to);
    for (std::size_t i = 0; i < words.size(); i += 2) {
        result.push_back(static_cast<std::int16_t>(words[i] & 0xFFFFU));
    }
    return result;
}

TEST(Organisation, TypeCodes) {
    struct Case {
        const char* srf;  ///< flag, shading, kind
        const char* kind;
        std::uint32_t code;
    };
    for (const Case& c :
         {Case{"0 F C", "0", 0x08},   {"0 G C", "0", 0x0C},       {"0 F G", "1", 0x12},
          {"0 G G", "1", 0x16},       {"0 F T", "0", 0x09},       {"0 G D", "0", 0x0D},
          {"0 G H", "0", 0x0F},       {"0 F W", "1", 0x211},      {"0 F S", "0", 0x209},
          {"0 G N", "1", 0x217},      {"1 G C", "0", 0x40048},    {"1 F G", "0", 0x4004C},
          {"1 G T", "1", 0x40051},    {"1 F H", "0", 0x4004D},    {"1 G W", "0", 0x40249},
          {"1 F N", "1", 0x40255},    {"81 F C", "0", 0x40148},   {"FF G H", "1", 0x00340155},
          {"2 F C", "0", 0x00100008}, {"4 F C", "0", 0x00200008}, {"78 F C", "0", 0x08},
          {"0 g c", "0", 0x08},       {"0 GG T", "0", 0x0E},      {"FFFFFE00 G X", "1", 0x14}}) {
        ModelFiles model;
        model.geo = "4 1 1;0;0;0;0;0;" + std::string(c.kind) + " 0 1 2 3 0 0 0 0";
        model.srf = "1;0 " + std::string(c.srf);
        model.images = {image(0, {0, 0})};
        const Conversion done = convertFiles(model, withHex());
        EXPECT_EQ(done.report, "") << c.srf;
        EXPECT_EQ(between(done.hex(), "/* Type */").at(0), c.code) << c.srf;
    }
}

TEST(Organisation, BodiesAndHeaders) {
    ModelFiles model;
    model.geo = "11 0 5;0;1;2;3;4;5;6;7;8;9;10;0 0 1 2 0 0 0 0 0;1 3 4 5 6 0 0 0 0;"
                "0 1 2 0 0 0 0 0 0;0 0 3 4 0 0 0 0 0;1 7 8 9 10 0 0 0 0";
    model.srf = "1;0-4 0 F C 0 0 0";
    model.frm = "=NULL;" + roots(6) + "2 7 0-2,7 8 9,10;0 4 3-6;5 4 7-10";
    const Conversion done = convertFiles(model, withHex());
    EXPECT_EQ(
        show(headersAndPackets(done)),
        show({154,        134,        2 | bit31,  0x08,       0x80020002, 0,          0x10,
              0x80010002, 10,         none,       139,        1 | bit31,  0x01000000, 0x80000007,
              1,          0,          0,          0,          0,          0,          171,
              134,        1 | bit31,  0x00800010, 0x80010002, 6,          none,       139,
              1 | bit31,  0x01000000, 0x80000007, 2,          1,          1,          0,
              0,          0,          none,       134,        1 | bit31,  0x10,       0x80010002,
              10,         none,       139,        1 | bit31,  0x01000008, 0x80010002, 0,
              0x20000000, 0x00080000, 0x00020001, 0x20000000, 0x00010000, 0x00080002, 0x28000000,
              0x00090000, 0x0005000A, 6,          0x28000000, 0x00070000, 0x00030000, 4,
              0x20000000, 0x00000000, 0x00020001}));
    EXPECT_EQ(writtenX(done), (std::vector{8, 1, 2, 9, 10, 5, 6, 7, 0, 3, 4, 0, 0, 0}));
    EXPECT_EQ(show(between(done.hex(), "/* Pre Primitive Top */", "/* Coordinate Number */")),
              show({0, 165, 0, 145, 0, 0, 182, 188}));
    EXPECT_EQ(show(between(done.hex(), "/* Primitive Global Header Number */",
                           "/* Next Primitive Pointer */")),
              show({2, 4, 194 | bit31, 211 | bit31, 0, 12 | bit31, 5, 208 | bit31, 227 | bit31,
                    233 | bit31, 0, 0}));
}

TEST(Organisation, CodesAndListsInTheOrderOfFirstAppearance) {
    // Lists of different order are different bodies, and a list may name a coordinate twice.
    ModelFiles model;
    model.geo = "9 1 4;0;0;0;0;0;0;0;0;0;0;0 0 1 2 0 0 0 0 0;0 3 4 5 0 0 0 0 0;"
                "0 6 7 8 0 0 0 0 0;0 1 2 0 0 0 0 0 0";
    model.srf = "4;2 0 F C;1 0 F C;3 2 F C;0 0 F C";
    model.frm = "=NULL;" + roots(3) + "1 3 0-2;2 3 0-2;2 3 3-5;1 3 3-5;2 6 6-8 6-8";
    const Words words = headersAndPackets(convertFiles(model, withHex()));
    EXPECT_EQ(
        show(Words(words.begin(), words.begin() + 27)),
        show({none, 71,         5 | bit31, 0x08,       0x80010002, 0, 0x08,       0x80010002, 0,
              0x08, 0x80010002, 3,         0x00100008, 0x80010002, 6, 0x08,       0x80010002, 9,  //
              none, 71,         3 | bit31, 0x00800008, 0x80010002, 3, 0x00100008, 0x80010002, 6}));
}

TEST(Organisation, SharedIsJudgedByFirstCoordinatesOnly) {
    ModelFiles model;
    model.geo = "4 1 1;0;0;0;0;0;0 0 1 2 3 0 0 0 0";
    model.srf = "1;0 0 F C";
    for (const auto& [lists, shared] :
         {std::pair{"1 3 0-2;2 1 0;0 1 1", false}, std::pair{"1 2 0 1;2 1 2", true},
          std::pair{"1 3 0-2;2 1 3", false}}) {
        model.frm = "=NULL;" + roots(3) + lists;
        const Words words = convertFiles(model).words();
        EXPECT_EQ(words.at(8) != 0, shared) << lists;  // the Post Primitive Top
    }
}

TEST(Shared, GatheringAndRenumbering) {
    ModelFiles model;
    model.geo = "6 0 2;0;1;2;3;4;5;0 0 5 2 0 0 0 0 0;0 1 4 3 0 0 0 0 0";
    model.srf = "1;0,1 0 F C 0 0 0";
    model.frm = "=NULL;" + roots(6) + "2 5 0-2,4,5;5 1 3";
    const Conversion done = convertFiles(model, withHex());
    // Coordinate 5 has no polygon of its own: its header comes from its shared vertex alone.
    EXPECT_EQ(
        show(headersAndPackets(done)),
        show({151,        134,        1 | bit31,  0x00800008, 0x80010002, 0,         none,
              139,        1 | bit31,  0x01000000, 0x80000007, 2,          0,         0,
              0,          0,          0,          none,       139,        1 | bit31, 0x01000000,
              0x80000007, 1,          2,          2,          0,          0,         0,
              none,       139,        1 | bit31,  0x01000008, 0x80010002, 0,         0x20000000,
              0,          0x00020001, 0x20000000, 0,          0x00020001}));
    EXPECT_EQ(writtenX(done), (std::vector{0, 5, 2, 1, 4, 3, 0, 0, 0}));
    EXPECT_EQ(show(between(done.hex(), "/* Pre Primitive Top */", "/* Coordinate Number */")),
              show({0, 0, 0, 145, 0, 0, 162, 173}));
}

/// Gathers as the format describes it: sweeps over the whole table with exchanges.
std::vector<int> sweep(const std::vector<int>& coordinate, const std::vector<bool>& shared,
                       const std::vector<int>& headers) {
    std::vector<int> order(coordinate.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<int>(i);
    }
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(order[i]); };
    std::vector<bool> moved(order.size());
    std::size_t t =
        order.size() - static_cast<std::size_t>(std::count(shared.begin(), shared.end(), true));
    for (const int header : headers) {
        for (bool any = true; any;) {
            any = false;
            for (std::size_t i = 0; i < order.size(); ++i) {
                if (!moved[at(i)] && shared[at(i)] && coordinate[at(i)] == header) {
                    std::swap(order[i], order[t]);
                    moved[at(t++)] = true;
                    any = true;
                }
            }
        }
    }
    return order;
}

TEST(Shared, GatheringOrderIsThatOfTheSweeps) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        unsigned state = seed;
        const auto random = [&](unsigned below) {
            state = state * 1103515245U + 12345U;
            return (state >> 16U) % below;
        };
        const std::size_t number = 6 + random(30);
        std::vector<int> coordinate(number);
        std::vector<std::vector<int>> members(3);
        for (std::size_t i = 0; i < number; ++i) {
            coordinate[i] = static_cast<int>(i < 3 ? i : random(3));
            members[static_cast<std::size_t>(coordinate[i])].push_back(static_cast<int>(i));
        }
        // Every triangle has a vertex of each coordinate; their headers come in vertex order.
        std::vector<bool> shared(number);
        std::string polygons;
        for (int p = 0; p < 4; ++p) {
            polygons += "0";
            for (const std::vector<int>& list : members) {
                const int v = list[random(static_cast<unsigned>(list.size()))];
                shared[static_cast<std::size_t>(v)] = true;
                polygons += " " + std::to_string(v);
            }
            polygons += " 0 0 0 0 0;";
        }
        std::vector<int> headers;
        ModelFiles model;
        model.geo = std::to_string(number) + " 0 4;";
        model.frm = "=NULL;" + roots(3);
        for (std::size_t i = 0; i < number; ++i) {
            model.geo += std::to_string(i) + ";";
            model.frm += std::to_string(coordinate[i]) + " 1 " + std::to_string(i) + ";";
            if (shared[i] && std::count(headers.begin(), headers.end(), coordinate[i]) == 0) {
                headers.push_back(coordinate[i]);
            }
        }
        model.geo += polygons;
        model.srf = "1;0-3 0 F C";
        const Conversion done = convertFiles(model, withHex());
        const bool all = std::count(shared.begin(), shared.end(), false) == 0;
        EXPECT_EQ(writtenX(done, all ? "/* Shared Vertex Top(Vertex Top) */" : "/* Vertex Top */",
                           "/* Calculated Shared Vertex Top */"),
                  sweep(coordinate, shared, headers))
            << "seed " << seed;
    }
}

TEST(Shared, Normals) {
    // A flat shared polygon has its first normal at every corner, in its last vertex's coordinate;
    // a letter that is neither F nor G counts as smooth.
    ModelFiles model;
    model.geo = "4 5 2;0;1;2;3;0;.001;.002;.003;.004;1 0 1 2 3 3 1 2 4 0;0 0 2 1 0 2 1 0 9;";
    model.frm = "=NULL;" + roots(2) + "0 2 0,1;1 2 2,3";
    const auto headers = [&](const char* shading) {
        model.srf = "1;0 0 " + std::string(shading) + " C 0 0 0";
        const Conversion done = convertFiles(model, withHex());
        const Words words = headersAndPackets(done);
        EXPECT_EQ(done.report, "");
        Words result;
        for (const std::size_t first : {8U, 19U}) {
            result.insert(result.end(), {words.at(first), words.at(first + 1)});
        }
        const Words packet(words.begin() + 28, words.begin() + 30);
        result.insert(result.end(), packet.begin(), packet.end());
        return result;
    };
    // Shared normals and their offset, in both coordinates; then [N0, V0] of the packet.
    EXPECT_EQ(show(headers("F")), show({0, 0, 1, 0, 0x28000000, 0x00000000}));
    EXPECT_EQ(show(headers("X")), show({2, 0, 2, 2, 0x28000000, 0x00000001}));
}

TEST(Meshes, BodiesCountMeshes) {
    ModelFiles model;
    model.geo = "9 1 6;0;0;0;0;0;0;0;0;0;0;0 0 1 2 0 0 0 0 0;0 1 2 3 0 0 0 0 0;0 2 3 4 0 0 0 0 0;"
                "0 0 1 2 0 0 0 0 0;0 6 7 8 0 0 0 0 0;1 0 1 2 3 0 0 0 0";
    model.srf = "1;0-5 0 F C 0 0 0";
    model.frm = "=NULL;" + roots(3) + "1 9 0-8;2 3 6-8";
    // A comment on the count line makes the next line part of it.
    model.bnd = "4 # meshes;2 9 9;2 1 2;2 3 0;1 5;1 4";
    const Words words = headersAndPackets(convertFiles(model, withHex()));
    EXPECT_EQ(show(Words(words.begin(), words.begin() + 18)),
              show({none, 71, 3 | bit31, 0x00800018, 0x80020002, 0, 0x10, 0x80010002, 12, 0x08,
                    0x80010002, 16, none, 71, 1 | bit31, 0x08, 0x80010002, 16}));
}

TEST(Meshes, SinglePolygonsAreWrittenInMaterialOrder) {
    ModelFiles model;
    model.geo = "3 1 3;0;0;0;0;0 0 1 2 0 0 0 0 0;0 1 2 0 0 0 0 0 0;0 2 0 1 0 0 0 0 0";
    model.srf = "1;2,0,1 0 F C 0 0 0";
    model.bnd = "3;1 0;1 1;1 2";
    const Words words = convertFiles(model).words();
    EXPECT_EQ(show(Words(words.begin() + 17, words.begin() + 26)),
              show({0x20000000, 0x00020000, 0x00010000, 0x20000000, 0, 0x00020001, 0x20000000,
                    0x00010000, 0x00000002}));
}

TEST(Groups, NamesGiveVerticesTheirCoordinates) {
    ModelFiles model;
    model.geo = "8 0 2;0;1;2;3;4;5;6;7;0 0 1 2 0 0 0 0 0;0 3 4 5 0 0 0 0 0";
    model.srf = "1;0,1 0 F C 0 0 0";
    // Coordinate 1's second line replaces its names; coordinate 2 carries "leg" twice.
    model.frm =
        "a comment=g.sqx and more;" + roots(3) + "1 1 leg;1 3 body,arm Leg;2 3 leg,body leg;0 0";
    model.sqx = "4;body 4 0-3;leg 3 3-5;Leg 1 6;nobody 1 7";
    const Words words = headersAndPackets(convertFiles(model, withHex()));
    EXPECT_EQ(
        show(Words(words.begin(), words.begin() + 18)),
        show({none, 71, 1 | bit31, 0x08, 0x80010002, 0,  //
              none, 71, 3 | bit31, 0x08, 0x80010002, 0, 0x08, 0x80010002, 3, 0x08, 0x80010002, 3}));
    EXPECT_EQ(show(between(convertFiles(model, withHex()).hex(), "/* Pre Primitive Top */",
                           "/* Coordinate Number */")),
              show({0, 93, 75, 81, 0}));
}

TEST(Pivots, AreSubtractedFromTheirCoordinates) {
    ModelFiles model;
    model.geo =
        "6 0 2;12 5 0;12 5 0;12 5 0;12 5 0;16777216;1.7;0 0 3 5 0 0 0 0 0;0 4 5 0 0 0 0 0 0";
    model.srf = "1;0 0 F C 0 0 0";
    model.frm = "=NULL;" + roots(4) + "1 1 1;2 1 1;2 2 2,2;3 1 4";
    // The second of two pivots acts on what the first left, in single precision.
    model.axs = "7;2 10 0 0;2 1 0 -1;1 .5 100;0 0 1.5;9 1 1 1;3 -1;3 16777200";
    RunOptions options = withHex();
    options.scale = 2;
    EXPECT_EQ(
        show(between(convertFiles(model, options).hex(), "/* Vertex Top */")),
        show({0x00070018, 0, 0xFF420001, 2, 0x000AFFEC, 4, 0x00070018, 0, 32, 0, 0xFFFD0003, 0}));
    model.axs = "0";
    EXPECT_EQ(writtenX(convertFiles(model, options)), (std::vector{24, 24, 24, 24, 0, 3}));
}

}  // namespace
}  // namespace mqf2vxb::tests
