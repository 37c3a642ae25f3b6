#include "text/scan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "format/fixed_point.h"

namespace mqf2vxb {
namespace {

constexpr Scanned number = Scanned::number;
constexpr Scanned nothing = Scanned::nothing;
constexpr Scanned outOfRange = Scanned::outOfRange;

struct IntegerCase {
    const char* text;
    Scanned scanned;
    std::int64_t value;
    const char* rest;
};

TEST(Scan, Integers) {
    for (const IntegerCase& c : {IntegerCase{"12 x", number, 12, " x"},
                                 {" \t\v\f\r\n-7,", number, -7, ","},
                                 {"+5", number, 5, ""},
                                 {"3.9", number, 3, ".9"},
                                 {"0x10", number, 0, "x10"},
                                 {"007", number, 7, ""},
                                 {"2147483647", number, 2147483647, ""},
                                 {"-2147483648", number, -2147483648LL, ""},
                                 {"2147483648", outOfRange, 99, ""},
                                 {"-99999999999999999999", outOfRange, 99, ""},
                                 {"+-5", nothing, 99, nullptr},
                                 {"--5", nothing, 99, nullptr},
                                 {"- 5", nothing, 99, nullptr},
                                 {"x", nothing, 99, nullptr},
                                 {"", nothing, 99, nullptr}}) {
        std::string_view text = c.text;
        std::int32_t value = 99;
        EXPECT_EQ(scanInteger(text, value), c.scanned) << c.text;
        EXPECT_EQ(value, c.value) << c.text;
        EXPECT_TRUE(c.rest == nullptr || text == c.rest) << c.text << " leaves " << text;
    }
}

TEST(Scan, HexadecimalNumbers) {
    for (const IntegerCase& c : {IntegerCase{"1F", number, 0x1F, ""},
                                 {" 0x2aZ", number, 0x2A, "Z"},
                                 {"0X2A", number, 0x2A, ""},
                                 {"+8", number, 8, ""},
                                 {"-1", number, 0xFFFFFFFF, ""},
                                 {"-80000000", number, 0x80000000, ""},
                                 {"-80000001", outOfRange, 99, ""},
                                 {"ffffffff", number, 0xFFFFFFFF, ""},
                                 {"0x100000000", outOfRange, 99, ""},
                                 {"0xg", number, 0, "xg"},
                                 {"g", nothing, 99, nullptr},
                                 {"", nothing, 99, nullptr}}) {
        std::string_view text = c.text;
        std::uint32_t value = 99;
        EXPECT_EQ(scanHex(text, value), c.scanned) << c.text;
        EXPECT_EQ(std::int64_t{value}, c.value) << c.text;
        EXPECT_TRUE(c.rest == nullptr || text == c.rest) << c.text << " leaves " << text;
    }
}

TEST(Scan, RealNumbers) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        const char* text;
        float value;
        const char* rest;
    };
    for (const Case& c : {Case{"1.5 2", 1.5F, " 2"},
                          {" -2", -2.0F, ""},
                          {"+3e1", 30.0F, ""},
                          {".5", 0.5F, ""},
                          {"5.", 5.0F, ""},
                          {"-0", -0.0F, ""},
                          {"1,5", 1.0F, ",5"},
                          {"0.1", 0.1F, ""},
                          {"16777217", 16777216.0F, ""},
                          {"0x1.8p1,", 3.0F, ","},
                          {"-0X.8", -0.5F, ""},
                          {"0x1p-200", 0.0F, ""},
                          {"0x1p200", infinity, ""},
                          {"0x0000000000000000000000000000000000.0001p148", infinity, ""},
                          {"0x10000000000000000000000000000000000p-400", 0.0F, ""},
                          {"0x1p-99999999999", 0.0F, ""},
                          {"0x1p+-5", 1.0F, "p+-5"},
                          {"0x-1", 0.0F, "x-1"},
                          {"0xinf", 0.0F, "xinf"},
                          {"0x.p1", 0.0F, "x.p1"},
                          {"0x.8p+2z", 2.0F, "z"},
                          {"0xfffffffffffffffffffffffffffffffff", infinity, ""},
                          {"1e39", infinity, ""},
                          {"-1e99999999999", -infinity, ""},
                          {"1e-99", 0.0F, ""},
                          {"-1e-99999999999", -0.0F, ""},
                          {"100000000000000000000000000000000000000000000e-50", 1e-6F, ""},
                          {"0.0000000000000000000000000000000000000000000001e90", infinity, ""},
                          {"0.00000000000000000000000000000000000000000000000001", 0.0F, ""},
                          {"400000000000000000000000000000000000000", infinity, ""},
                          {"inf", infinity, ""},
                          {"-INFINITY", -infinity, ""},
                          {"NaN", nan, ""}}) {
        std::string_view text = c.text;
        float value = 99;
        EXPECT_EQ(scanReal(text, value), number) << c.text;
        EXPECT_EQ(std::memcmp(&value, &c.value, sizeof value) == 0 || std::isnan(c.value), true)
            << c.text << " is " << value;
        EXPECT_EQ(std::isnan(value), std::isnan(c.value)) << c.text;
        EXPECT_EQ(text, c.rest) << c.text;
    }
    for (const char* const noNumber : {"", " ", "x", "+-1", "--1", ".", "-", "e5", "+"}) {
        std::string_view text = noNumber;
        float value = 99;
        EXPECT_EQ(scanReal(text, value), nothing) << noNumber;
        EXPECT_EQ(value, 99.0F) << noNumber;
    }
}

TEST(FixedPoint, TruncatesTowardZeroAndKeepsTheLowBits) {
    const std::pair<double, std::uint32_t> cases[] = {
        {0.96, 0},
        {-0.96, 0},
        {1.5, 1},
        {-2.7, 0xFFFFFFFE},
        {40000.0, 40000},
        {4294967297.0, 1},
        {-4294967297.9, 0xFFFFFFFF},
        {std::ldexp(3.0, 63), 0},
        {std::ldexp(1.0, 70) + std::ldexp(1.0, 20), 0x100000},
        {-std::ldexp(0x10000100001p0, 24), 0xFF000000},
        {HUGE_VAL, 0},
        {-HUGE_VAL, 0},
        {std::nan(""), 0}};
    for (const auto& [value, word] : cases) {
        EXPECT_EQ(truncated(value), word) << value;
    }
    EXPECT_EQ(truncatedPair(1.5, -2.7), 0xFFFE0001U);
}

}  // namespace
}  // namespace mqf2vxb
