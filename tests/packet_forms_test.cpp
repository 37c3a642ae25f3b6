#include "packets/packet_forms.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

/// The packet words of a model without hierarchy, up to where they end.
Words packets(const Words& words) {
    constexpr std::size_t primitiveTop = 8;
    const auto offset = [&](std::size_t i) {
        return words.begin() + static_cast<std::ptrdiff_t>(
                                   std::min<std::size_t>(words.at(i) & 0x7FFFFFFFU, words.size()));
    };
    return {offset(primitiveTop), offset(primitiveTop + 1)};
}

/// One row of the table of forms.
struct FormRow {
    PrimitiveTypeCode code = 0;
    std::uint32_t drawing = 0;
    std::size_t size = 0;
    std::size_t furtherSize = 0;
    std::vector<std::string> words;
    std::vector<std::string> further;

    [[nodiscard]] bool has(std::uint32_t bit) const { return (code & bit) != 0; }
    [[nodiscard]] bool unlit() const { return has(0x40); }
    [[nodiscard]] bool strip() const { return (code & 0x18) == 0x18; }
    [[nodiscard]] bool perCorner() const { return has(unlit() ? 4 : 2); }
};

std::vector<FormRow> formRows() {
    std::ifstream file(MQF2VXB_TEST_DATA "/packet_forms.txt");
    std::vector<FormRow> rows;
    for (std::string line; std::getline(file, line);) {
        std::istringstream text(line);
        FormRow row;
        if (text >> std::hex >> row.code >> row.drawing >> std::dec >> row.size >>
            row.furtherSize) {
            std::vector<std::string>* words = &row.words;
            for (std::string word; text >> word;) {
                if (word == "|") {
                    words = &row.further;
                } else {
                    words->push_back(word);
                }
            }
            rows.push_back(row);
        }
    }
    return rows;
}

// Distinct values for the fields of polygon k: corner i of its colour, texture, vertex and normal.
std::uint32_t red(std::uint32_t k, std::uint32_t i) { return 16 * k + i + 1; }
std::uint32_t u(std::uint32_t k, std::uint32_t i) { return 100 * k + 3 * i; }
std::uint32_t v(std::uint32_t k, std::uint32_t i) { return 50 * k + 5 * i + 0x10; }
constexpr std::uint32_t vertexOf[2][4] = {{1, 2, 3, 4}, {2, 3, 5, 6}};
std::uint32_t normalOf(std::uint32_t k, std::uint32_t i) { return 6 + 4 * k + i; }

/// The SRF line of a polygon of this form.
std::string materialLine(const FormRow& row, std::uint32_t k) {
    const bool textured = row.has(1);
    const bool window = row.has(0x200);
    const char kind = window     ? (row.perCorner() ? 'N'
                                    : row.unlit()   ? 'S'
                                                    : 'W')
                      : textured ? (row.perCorner() ? 'H'
                                    : row.unlit()   ? 'D'
                                                    : 'T')
                                 : (row.perCorner() ? 'G' : 'C');
    std::ostringstream line;
    line << k << ' ' << std::hex << (0x10 | (row.unlit() ? 1 : 0) | (row.has(0x100) ? 0x80 : 0))
         << std::dec << (!row.unlit() && row.has(4) ? " G " : " F ") << kind
         << (textured ? " 0" : "") << (window ? " 32 16 64 32" : "");
    for (std::uint32_t i = 0; textured && i < 4; ++i) {
        line << ' ' << u(k, i) << ' ' << v(k, i);
    }
    for (std::uint32_t i = 0; i < (row.perCorner() ? 4U : 1U); ++i) {
        line << ' ' << red(k, i) << " 200 30";
    }
    return line.str();
}

std::uint32_t half(const FormRow& row, std::uint32_t k, const std::string& field) {
    const std::uint32_t i = field.size() > 1 ? static_cast<std::uint32_t>(field[1] - '0') : 0;
    const bool window = row.has(0x200);
    switch (field[0]) {
    case 'V': return vertexOf[k][i];
    case 'N': return normalOf(k, i);
    case 'T':
        return ((u(k, i) + (window ? 0 : 0x20)) & 0xFFU) | ((v(k, i) + (window ? 0 : 0xF0)) & 0xFFU)
                                                               << 8U;
    case 'L': return 0x78D3;
    case 'P': return 0x5F;
    default: return 0;
    }
}

std::uint32_t wordOf(const FormRow& row, std::uint32_t k, const std::string& field) {
    switch (field[0]) {
    case 'Z': return 0;
    case 'W': return 0xE20133DC;
    case 'C':
        return row.drawing << 24U | 30U << 16U | 200U << 8U |
               red(k, static_cast<std::uint32_t>(field[1] - '0'));
    default: {
        const std::size_t colon = field.find(':');
        return half(row, k, field.substr(0, colon)) | half(row, k, field.substr(colon + 1)) << 16U;
    }
    }
}

TEST(PacketForms, EveryFormIsWrittenAsItsTableSays) {
    const std::vector<FormRow> rows = formRows();
    ASSERT_EQ(rows.size(), 66U);
    ASSERT_EQ(packetForms().size(), 66U);
    for (const FormRow& row : rows) {
        ModelFiles model;
        const std::string kind = (row.code & 0x18) == 0x10 ? "1" : "0";
        model.geo = "7 16 2;" + repeated(23, "0;") + kind + " 1 2 3 4 6 7 8 9;" + kind +
                    " 2 3 5 6 10 11 12 13";
        model.srf = row.strip() ? "2;" + materialLine(row, 0) + ";" + materialLine(row, 1)
                                : "1;" + materialLine(row, 0);
        model.bnd = row.strip() ? "1;2 0 1" : "";
        model.images = {image(8, {0x01F003C8, 0}, {0x01E30135, 0})};
        const Conversion done = convertFiles(model, withHex());
        ASSERT_EQ(done.report, "") << std::hex << row.code;
        EXPECT_EQ(between(done.hex(), "/* Type */").at(0), row.code);

        Words expected(row.strip() ? 1 : 0, 2);
        for (const std::string& word : row.words) {
            expected.push_back(wordOf(row, 0, word));
        }
        EXPECT_EQ(expected.size(), row.size);
        for (const std::string& word : row.further) {
            expected.push_back(wordOf(row, 1, word));
        }
        EXPECT_EQ(expected.size(), row.size + row.furtherSize);
        EXPECT_EQ(show(packets(done.words())), show(expected)) << std::hex << row.code;

        const PacketForm* form = findPacketForm(row.code | 0x01300000);
        ASSERT_NE(form, nullptr);
        EXPECT_EQ(form->code, row.code);
    }
}

/// A triangle with this SRF line and image.
Conversion drawTriangle(const std::string& srf, const std::string& imageFile,
                        const char* kind = "0") {
    ModelFiles model;
    model.geo = "4 1 1;0;0;0;0;0 0 1;" + std::string(kind) + " 0 1 2 3 0 0 0 0";
    model.srf = "1;" + srf;
    model.images = {imageFile};
    return convertFiles(model);
}

TEST(TextureWords, PlaceAnImageInItsPage) {
    struct Case {
        const char* srf;
        std::uint32_t flag;
        std::uint32_t position;
        Words words;  ///< [T0, CLUT] [T1, PAGE] [T2, 0]
    };
    for (const Case& c :
         {Case{"0 0 F T 0 64 128 64 128 64 128 0 0", 0, 0x01F003C8, {0x7060, 0x001F7060, 0x7060}},
          {"0 8 F T 0 1 2 3 4 5 6 999 999", 1, 0x02050043, {0x0707, 0x08A10909, 0x0B0B}},
          {"0 18 F D 0 1 2 3 4 5 6 0 0 9 9 9", 2, 0x0000003F, {0x0240, 0x01600442, 0x0644}},
          {"0 0 F T 0 250 0 300 1 490 2", 0, 0x00000004, {0x000A, 0x0000013C, 0x02FA}},
          {"0 0 F T 0 -1 -256 0 0 -300 1", 0, 0, {0x00FF, 0, 0x01D4}}}) {
        const Conversion done = drawTriangle(c.srf, image(c.flag, {c.position, 0}));
        EXPECT_EQ(done.report, "") << c.srf;
        Words words = packets(done.words());
        ASSERT_EQ(words.size(), 5U);
        words.resize(3);
        EXPECT_EQ(show(words), show(c.words)) << c.srf;
    }
}

TEST(TextureWords, CornersOnDifferentPagesEndTheRunBehindTheColours) {
    struct Case {
        const char* srf;
        const char* kind;
        Words written;  ///< of the packets
    };
    for (const Case& c : {Case{"0 0 F T 0 0 0 223 0 224 0 0 0", "0", {}},
                          {"0 0 F T 0 0 0 0 15 0 16 0 0", "0", {}},
                          {"0 0 G H 0 0 0 0 0 0 0 0 16 1 2 3 4 5 6 7 8 9 1 0 0",
                           "1",
                           {0x3C030201, 0x3C060504, 0x3C090807, 0x3C000001}},
                          {"0 1 F T 0 0 0 256 0", "0", {0x24808080}},
                          {"0 81 F D 0 0 0 512 0 224 0 0 0 1 2 3", "0", {}}}) {
        const Conversion done = drawTriangle(c.srf, image(8, {0x01F003C8, 0}, {0, 0}), c.kind);
        EXPECT_EQ(done.report, "\nNot suitable texture\n");
        EXPECT_EQ(show(packets(done.words())), show(c.written)) << c.srf;
    }
}

TEST(TextureWords, TheFirstFaultInTheOrderOfTheFileEndsTheRun) {
    // Polygon 1 comes first in the SRF file; but its group is the second.
    ModelFiles model;
    model.geo = "6 0 5;0;0;0;0;0;0;0 0 1 2;0 1 2 3;0 2 3 4;0 3 4 5;0 4 5 0";
    model.srf = "5;0 0 F H 0 0 0 1 1 2 2 0 0 1;1 0 F T 0 0 0 256 0;2 0 F H 0 0 0 1 1 2 2 0 0 2;"
                "3 0 F H 0 0 0 256 0 0 0 0 0 3;4 0 F H 0 0 0 256 0 0 0 0 0 4";
    model.images = {image(2, {0, 0})};
    Conversion done = convertFiles(model);
    EXPECT_EQ(done.report, "\nNot suitable texture\n");
    EXPECT_EQ(show(packets(done.words())),
              show({0x34000001, 0x34000000, 0x34000000, 0, 0x01000101, 0x0202, 0, 0x00020001,
                    0x34000002, 0x34000000, 0x34000000, 0, 0x01000101, 0x0202, 0x00020000,
                    0x00040003, 0x34000003, 0x34000000, 0x34000000}));
    // Of two faults in strips, the one in the first group: an unknown kind behind polygon 0.
    model.geo.replace(model.geo.find(";0 2 3 4"), 3, ";9 ");
    model.bnd = "3;1 1;2 0 2;2 4 3";
    done = convertFiles(model);
    EXPECT_EQ(done.report, "\nNot suitable texture\n");
    EXPECT_EQ(show(packets(done.words())), show({}));
    model.bnd = "3;2 0 2;1 1;2 4 3";
    done = convertFiles(model);
    EXPECT_EQ(done.report, "\nUnknown the GEOflag... (No.   2, flag: 9)\n");
    EXPECT_EQ(show(packets(done.words())),
              show({2, 0x34000001, 0x34000000, 0x34000000, 0, 0x01000101, 0x0202, 0, 0x00020001}));
}

TEST(TextureWords, WindowsTakeAnyCoordinates) {
    const auto draw = [](const char* srf, std::uint32_t flag, std::uint32_t position) {
        return packets(drawTriangle(srf, image(flag, {position, 0})).words());
    };
    EXPECT_EQ(show(draw("0 0 F W 0 32 16 64 32 256 1 -1 999 7 8", 0, 0)),
              show({0xE20223DC, 0x0100, 0xE7FF, 0x0807, 0, 0x00020001}));
    EXPECT_EQ(draw("0 0 F W 0 20 0 7 -8", 0, 0).at(0), 0xE20F801DU);
    EXPECT_EQ(draw("0 0 F S 0 8 -8 0 0 0 0 0 0 0 0 0 0 1 2 3", 1, 0x00F80004).at(0), 0xE20F843FU);
    // Unlit kinds without a colour of their own show the texture as it is.
    EXPECT_EQ(draw("0 1 F W 0 8 8 0 0", 0, 0).at(1), 0x24808080U);
    EXPECT_EQ(draw("0 5 F S 0 8 8 0 0 0 0 0 0 0 0 0 0 1 2 3", 0, 0).at(1), 0x26030201U);
    EXPECT_EQ(draw("0 1 F T 0 0 0", 0, 0).at(0), 0x24808080U);
    EXPECT_EQ(draw("0 81 G T 0 0 0", 0, 0).at(1), 0x24808080U);
}

/// Strips of the polygons of `geo`, vertices 0 to 39 and normals 0 to 19, in this order of meshes.
Conversion drawStrips(const std::string& polygons, const std::string& srf, const std::string& bnd,
                      const std::string& imageFile = {}) {
    ModelFiles model;
    model.geo = "40 20 " + std::to_string(std::count(polygons.begin(), polygons.end(), ';')) + ";" +
                repeated(60, "0;") + polygons;
    model.srf = srf;
    model.bnd = bnd;
    if (!imageFile.empty()) {
        model.images = {imageFile};
    }
    return convertFiles(model);
}

TEST(Strips, TurnTheirPolygons) {
    EXPECT_EQ(
        show(packets(drawStrips("0 10 11 12 0 7 0 0 0;0 13 11 12 0 8 0 0 0;0 12 14 13 0 9 0 0 0;",
                                "3;0 0 F C 1 0 0;1 0 F C 2 0 0;2 0 F C 3 0 0", "1;3 0 1 2")
                         .words())),
        show({3, 0x20000001, 0x000A0007, 0x000C000B, 0x20000002, 0x000D0008, 0x20000003,
              0x000E0009}));

    // (12, 11, 13), (13, 12, 11) and (12, 14, 11) behind (10, 11, 12): the last corner is new.
    for (const auto& [corners, order] :
         {std::pair{"12 11 13", "102"}, std::pair{"13 12 11", "210"}, std::pair{"12 14 11", "201"},
          std::pair{"11 12 14", "012"}, std::pair{"20 21 22", "012"},
          std::pair{"20 11 22", "102"}}) {
        const Conversion done =
            drawStrips("0 10 11 12 0 0 0 0 0;0 " + std::string(corners) + " 0 5 6 7 0;",
                       "2;0 0 G H 0 0 0 0 0 0 0 0 0;1 0 G H 0 10 0 11 0 12 0 0 0 1 0 0 2 0 0 3 0 0",
                       "1;2 0 1", image(2, {0, 0}));
        const Words words = packets(done.words());
        ASSERT_EQ(words.size(), 18U) << done.report;
        std::uint32_t vertices[3] = {};
        std::istringstream(corners) >> vertices[0] >> vertices[1] >> vertices[2];
        const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(order[i] - '0'); };
        EXPECT_EQ(show(Words(words.begin() + 10, words.end())),
                  show({0x34000001 + at(0), 0x34000001 + at(1), 0x34000001 + at(2), 10 + at(0),
                        (10 + at(1)) | 0x01000000, 10 + at(2), (5 + at(0)) | (5 + at(1)) << 16U,
                        (5 + at(2)) | vertices[at(2)] << 16U}))
            << corners;
    }
}

TEST(Strips, StandByThemselvesInMeshOrder) {
    // A quadrangle is drawn as a triangle, and a flat polygon's normals are not turned.
    EXPECT_EQ(
        show(packets(drawStrips("1 3 4 5 6 1 2 3 4;0 5 4 7 0 8 9 10 0;0 0 1 2 0 0 0 0 0;"
                                "1 2 1 4 3 11 12 13 14;0 0 1 2 0 5 0 0 0;0 0 1 2 0 6 0 0 0;",
                                "1;0-5 0 F G 1 0 0 2 0 0 3 0 0 4 0 0", "4;2 2 3;1 5;2 0 1;1 4")
                         .words())),
        show({2,          0x30000001, 0x30000002, 0x30000003, 0,          0x00020001,  // polygon 2
              0x30000002, 0x30000001, 0x30000003, 0x0004000B,                          // polygon 3
              2,          0x30000001, 0x30000002, 0x30000003, 0x00030001, 0x00050004,  // polygon 0
              0x30000002, 0x30000001, 0x30000003, 0x00070008,                          // polygon 1
              0x30000001, 0x30000002, 0x30000003, 0x00000005, 0x00020001,              // polygon 4
              0x30000001, 0x30000002, 0x30000003, 0x00000006, 0x00020001}));
}

TEST(Strips, TakeLinesAndSprites) {
    EXPECT_EQ(
        show(packets(drawStrips("0 20 21 22 0 0 0 0 0;3 30 1 1 0 1 0 0 0;3 30 8 8 0 2 0 0 0;"
                                "3 30 16 16 0 3 0 0 0;2 30 31 32 0 4 0 0 0;3 30 1 8 0 5 0 0 0;",
                                "1;0-5 4 F C 0 0 0", "1;6 0 1 2 3 4 5")
                         .words())),
        show({6, 0x22000000, 0x00140000, 0x00160015, 0x6E000000, 0x00010001, 0x76000000, 0x00080002,
              0x7E000000, 0x00100003, 0x42000000, 0x00200004, 0x66000000, 0x00080005}));
}

TEST(Strips, AnUnknownPolygonKindEndsTheRunBehindItsPredecessor) {
    const Conversion done =
        drawStrips("0 1 2 3 0 0 0 0 0;1a 2 3 4 0 0 0 0 0;", "1;0,1 0 F C 0 0 0", "1;2 0 1");
    EXPECT_EQ(done.report, "\nUnknown the GEOflag... (No.   1, flag:1a)\n");
    EXPECT_EQ(show(packets(done.words())), show({2, 0x20000000, 0x00010000, 0x00030002}));
}

}  // namespace
}  // namespace mqf2vxb::tests
