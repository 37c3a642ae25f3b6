#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "run/command_line.h"
#include "support/memory_files.h"
#include "support/test_folder.h"

namespace mqf2vxb::tests {
namespace {

namespace fs = std::filesystem;

/// A folder with a model for each test.
class Program : public testing::Test {
protected:
    Program() {
        for (const auto& [file, text] : smallModel().files()) {
            write(file, text);
        }
    }

    void write(const std::string& name, const std::string& text) const { test_.write(name, text); }
    [[nodiscard]] std::string read(const std::string& name) const { return test_.read(name); }
    /// What the program prints behind its banner when it is run in the folder; its status is 0.
    [[nodiscard]] std::string run(const std::string& arguments,
                                  const std::string& before = "") const {
        const auto [status, output] = test_.run(before + "'" MQF2VXB_PROGRAM "' " + arguments);
        EXPECT_EQ(status, 0) << arguments;
        EXPECT_EQ(output.rfind(bannerText(), 0), 0U) << output;
        return output.substr(std::min(output.size(), bannerText().size()));
    }

    const TestFolder test_;
    const fs::path& folder_ = test_.path();
};

TEST_F(Program, SaysHowItIsCalled) {
    for (const char* const arguments : {"", "-ni", "-s 2 -o", "-bin2cl"}) {
        EXPECT_EQ(run(arguments), usageText()) << arguments;
    }
    EXPECT_EQ(run("-x m.mqf"), "\nCan't open this file!\n\nFile Name:-x\n");
}

TEST_F(Program, WritesTheFilesThatTheOptionsAskFor) {
    EXPECT_EQ(run("m.mqf -ni"), "");
    EXPECT_EQ(wordsOf(read("m.vxb")), convertFiles(smallModel()).words());
    EXPECT_EQ(run("-o out.final.bin -bin2cl text.h m.mqf"), "");
    EXPECT_EQ(read("out.vxb"), read("m.vxb"));
    EXPECT_EQ(read("text.h"), convertFiles(smallModel(), withHex()).hex());
    RunOptions options;
    options.imageOutput = false;
    options.scale = 0.5F;
    EXPECT_EQ(run("-s 0.5 -ni -o small m.mqf"), "");
    EXPECT_EQ(wordsOf(read("small.vxb")), convertFiles(smallModel(), options).words());
    EXPECT_EQ(run("./m.mqf"), "");
    EXPECT_EQ(read(".vxb"), read("m.vxb"));
}

TEST_F(Program, TakesImagesFromPipesAndWithLargeColourTables) {
    constexpr std::uint32_t with8Bits = 0x09;
    Words pixel(9000);
    Words clut(4000);
    std::iota(pixel.begin(), pixel.end(), 1);
    std::iota(clut.begin(), clut.end(), 1);
    Files files = smallModel().files();
    files["1.pxl"] = image(with8Bits, pixel, clut);
    files["0.pxl"] = image(with8Bits, clut, pixel);
    const Conversion expected = convertFiles(files);
    EXPECT_EQ(expected.report, "");
    write("1.pxl", files["1.pxl"]);
    write("bytes", files["0.pxl"]);
    EXPECT_EQ(run("m.mqf",
                  "rm 0.pxl; mkfifo 0.pxl; timeout 60 sh -c 'cat bytes >0.pxl' >/dev/null 2>&1 & "),
              "");
    EXPECT_EQ(wordsOf(read("m.vxb")), expected.words());
}

TEST_F(Program, NeverWritesOverAnInput) {
    fs::create_directory(folder_ / "sub");
    fs::create_hard_link(folder_ / "g.geo", folder_ / "hard.vxb");
    fs::create_symlink("s.srf", folder_ / "link.vxb");
    fs::create_symlink("new", folder_ / "dangling");
    fs::create_symlink("a.vxb", folder_ / "other.vxb");
    write("m.vxb", "untouched");
    const Files before = smallModel().files();
    const auto refused = [&](const std::string& arguments, const std::string& name,
                             const std::string& cause) {
        EXPECT_EQ(run(arguments + " m.mqf"), notCorrect(name, 0, cause)) << arguments;
    };
    const std::string input = "the output is the same file as the input ";
    refused("-o hard", "hard.vxb", input + "g.geo");
    refused("-o link", "link.vxb", input + "s.srf");
    refused("-bin2cl sub/../m.mqf", "sub/../m.mqf", input + "m.mqf");
    refused("-bin2cl ./0.pxl", "./0.pxl", input + "0.pxl");
    const std::string output = "the hex text is the same file as the output ";
    refused("-bin2cl m.vxb", "m.vxb", output + "m.vxb");
    refused("-o a -bin2cl \"$PWD/sub/../a.vxb\"", (folder_ / "sub/../a.vxb").string(),
            output + "a.vxb");
    refused("-o a -bin2cl other.vxb", "other.vxb", output + "a.vxb");
    for (const auto& [file, text] : before) {
        EXPECT_EQ(read(file), text) << file;
    }
    EXPECT_EQ(read("m.vxb"), "untouched");
    EXPECT_FALSE(fs::exists(folder_ / "a.vxb"));
    EXPECT_EQ(run("-bin2cl dangling m.mqf"), "");
    EXPECT_EQ(wordsOf(read("m.vxb")), between(read("new"), "/* ID */"));
}

TEST_F(Program, ReportsWhatTheMachineRefuses) {
    const std::string open = "\nCan't open this file!\n\nFile Name:";
    EXPECT_EQ(run("."), open + ".\n");
    EXPECT_EQ(run("gone/m.mqf"), open + "gone/m.mqf\n");
    EXPECT_EQ(run("-o gone/m m.mqf"), open + "gone/m.vxb\n");
    fs::create_directory(folder_ / "dir.vxb");
    EXPECT_EQ(run("-o dir m.mqf"), open + "dir.vxb\n");
    EXPECT_EQ(run("-bin2cl . m.mqf"), open + ".\n");
    EXPECT_EQ(read("m.vxb"), "");
    fs::create_symlink("loop", folder_ / "loop.vxb");
    fs::create_symlink("loop.vxb", folder_ / "loop");
    EXPECT_EQ(run("-o loop -bin2cl loop m.mqf"), open + "loop.vxb\n");
    fs::remove(folder_ / "0.pxl");
    fs::create_directory(folder_ / "0.pxl");
    EXPECT_EQ(run("m.mqf"), open + "0.pxl\n");
    fs::remove(folder_ / "0.pxl");
    write("0.pxl", smallModel().images[0]);
    fs::resize_file(folder_ / "g.geo", (std::uintmax_t{1} << 31U) + 1);
    EXPECT_EQ(run("m.mqf"), notCorrect("g.geo", 0, "the file is larger than 2147483648 bytes"));
    fs::remove(folder_ / "g.geo");
    fs::create_symlink("/dev/zero", folder_ / "g.geo");
    EXPECT_EQ(run("m.mqf"), notCorrect("g.geo", 0, "the file is a device"));
    fs::remove(folder_ / "g.geo");
    write("g.geo", smallModel().files().at("g.geo"));
    EXPECT_EQ(run("m.mqf", "exec 3>&-; ulimit -n 4; "),
              notCorrect("0.pxl", 0, "no more files can be opened"));
    // The hex text is opened when all inputs were read, and its reader comes when the image is gone.
    EXPECT_EQ(
        run("-bin2cl hex m.mqf",
            "rm m.vxb; mkfifo hex; timeout 60 sh -c 'until [ -e m.vxb ]; do sleep 0.01; done; "
            "rm 0.pxl; mkfifo 0.pxl; cat hex' >/dev/null 2>&1 & "),
        notCorrect("0.pxl", 0, "the file changed while it was converted"));
    fs::remove(folder_ / "0.pxl");
    write("0.pxl", smallModel().images[0]);
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(run("-bin2cl /dev/full m.mqf"),
                  "\nCan't write this file!\n\nFile Name:/dev/full\n");
        EXPECT_EQ(wordsOf(read("m.vxb")), convertFiles(smallModel()).words());
    }
}

TEST_F(Program, ConvertsTheExamples) {
    for (const fs::directory_entry& file : fs::directory_iterator(MQF2VXB_EXAMPLES)) {
        fs::copy(file, folder_);
    }
    for (const std::string model : {"crawler", "crawler_groups", "crawler_strips"}) {
        EXPECT_EQ(run("-bin2cl hex " + model + ".mqf"), "");
        EXPECT_GT(read(model + ".vxb").size(), 1000U);
        EXPECT_EQ(show(wordsOf(read(model + ".vxb"))), show(between(read("hex"), "/* ID */")));
        EXPECT_EQ(run("-ni -o without " + model + ".mqf"), "");
        EXPECT_LT(read("without.vxb").size(), read(model + ".vxb").size());
    }
    // The same model, once with vertices and once with groups and pivots in its hierarchy.
    EXPECT_EQ(read("crawler.vxb"), read("crawler_groups.vxb"));
}

}  // namespace
}  // namespace mqf2vxb::tests
