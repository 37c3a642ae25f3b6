#include "run/command_line.h"

#include <gtest/gtest.h>

#include <sstream>

#include "base/diagnostics.h"
#include "support/memory_files.h"

namespace mqf2vxb::tests {
namespace {

/// Scans an argument list given as one text; returns the index found.
std::size_t scan(const std::string& text, RunOptions& options) {
    std::istringstream stream("mqf2vxb " + text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    return getOptions(arguments, options);
}

TEST(CommandLine, Options) {
    struct Case {
        const char* text;
        std::size_t index;
        float scale;
        bool images;
        const char* output;
        const char* hex;
    };
    for (const Case& c : {Case{"", 1, 1, true, "", ""},
                          {"m.mqf", 1, 1, true, "", ""},
                          {"-s 2 -ni m.mqf", 4, 2, false, "", ""},
                          {"m.mqf -s 2", 1, 1, true, "", ""},
                          {"-s abc m.mqf", 3, 0, true, "", ""},
                          {"-s -1.5e1x m.mqf", 3, -15, true, "", ""},
                          {"-o a -o b.c -bin2cl d -ni m", 8, 1, false, "b.c", "d"},
                          {"-S 2", 1, 1, true, "", ""},
                          {"-o -ni -ni", 4, 1, false, "-ni", ""},
                          {"-s", 2, 1, true, "", ""},
                          {"-ni -o", 3, 1, false, "", ""},
                          {"-bin2cl", 2, 1, true, "", ""}}) {
        RunOptions options;
        EXPECT_EQ(scan(c.text, options), c.index) << c.text;
        EXPECT_EQ(options.scale, c.scale) << c.text;
        EXPECT_EQ(options.imageOutput, c.images) << c.text;
        EXPECT_EQ(options.outputName, c.output) << c.text;
        EXPECT_EQ(options.outputNameGiven, !options.outputName.empty()) << c.text;
        EXPECT_EQ(options.hexName, c.hex) << c.text;
        EXPECT_EQ(options.hexOutput, !options.hexName.empty()) << c.text;
    }
}

TEST(CommandLine, OutputNameEndsAtTheFirstDot) {
    const std::pair<const char*, const char*> names[] = {
        {"car.mqf", "car.vxb"},         {"car", "car.vxb"}, {"my.model.mqf", "my.vxb"},
        {"data.old/m.mqf", "data.vxb"}, {"./car", ".vxb"},  {"", ".vxb"}};
    for (const auto& [name, output] : names) {
        RunOptions options;
        makeOutputName(name, options);
        EXPECT_EQ(options.outputName, output) << name;
        options.outputNameGiven = true;
        options.outputName = name;
        makeOutputName("other.mqf", options);
        EXPECT_EQ(options.outputName, output) << "-o " << name;
    }
}

TEST(CommandLine, NamesHoldAtMost255Characters) {
    const std::string longest(255, 'n');
    RunOptions options;
    EXPECT_EQ(scan("-o " + longest + " -bin2cl " + longest + " " + longest, options), 5U);
    const std::string tooLong = longest + "n";
    for (const char* const before : {"", "-o ", "-bin2cl "}) {
        try {
            scan(before + tooLong + " m.mqf", options);
            ADD_FAILURE() << before << "was accepted";
        } catch (const Report& report) {
            EXPECT_EQ(report.text(), notCorrect(tooLong, 0, "name longer than 255 characters"));
        }
    }
    try {
        makeOutputName(longest, options);
        ADD_FAILURE() << "the derived name was accepted";
    } catch (const Report& report) {
        EXPECT_EQ(report.text(),
                  notCorrect(longest + ".vxb", 0, "name longer than 255 characters"));
    }
}

TEST(CommandLine, BannerAndUsage) {
    const std::string banner = bannerText();
    EXPECT_EQ(banner.rfind("\nmqf2vxb version 1.5\n", 0), 0U);
    EXPECT_EQ(std::count(banner.begin(), banner.end(), '\n'), 3);
    EXPECT_EQ(usageText(), "\n>mqf2vxb [option] MQFfile name\n" + std::string(61, '-') +
                               "\n[-s 1.0(default)]    Zoom in,zoom out\n"
                               "[-o file-name]       Set output file name\n"
                               "                     (default:MQFname.vxb)\n"
                               "[-bin2cl file-name]  Hex output\n"
                               "[-ni]                Not output image data\n");
}

}  // namespace
}  // namespace mqf2vxb::tests
