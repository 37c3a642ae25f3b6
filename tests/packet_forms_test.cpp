#include "format/packet_forms.h"

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

}  // namespace
}  // namespace mqf2vxb::tests
