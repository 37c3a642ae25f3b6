#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <regex>
#include <utility>

#include <nlohmann/json.hpp>

#include "support/memory_files.h"
#include "support/test_folder.h"

namespace mqf2vxb::tests {
namespace {

namespace fs = std::filesystem;

/// A folder with a small model, "m.mqf".
class Convert : public testing::Test {
protected:
    Convert() {
        for (const auto& [file, text] : smallModel().files()) {
            folder.write(file, text);
        }
    }

    [[nodiscard]] TestFolder::Result convert(const std::string& arguments) const {
        return folder.run("'" VXBTOOL_PROGRAM "' convert " + arguments);
    }
    /// Runs the tool, which is to end like this.
    void expect(const std::string& arguments, int status, const std::string& output = {}) const {
        const TestFolder::Result result = convert(arguments);
        EXPECT_EQ(result.status, status) << arguments;
        EXPECT_EQ(result.output, output) << arguments;
    }
    [[nodiscard]] bool leftTemporaryFiles() const {
        return folder.run("ls -A | grep vxbtool").status == 0;
    }

    TestFolder folder;
    const std::string wanted = bytesOf(convertFiles(smallModel()).words());
};

TEST_F(Convert, WritesTheBytesOfTheConverter) {
    fs::copy(MQF2VXB_EXAMPLES, folder.path());
    for (const std::string name : {"crawler", "crawler_strips", "crawler_groups"}) {
        const std::string model = " " + name + ".mqf";
        ASSERT_EQ(folder.run(MQF2VXB_PROGRAM " -s 0.37 -ni -bin2cl a.txt -o a" + model).status, 0);
        expect("--scale 0.37 --no-images --hex b.txt -o b.vxb" + model, 0);
        EXPECT_EQ(folder.read("b.vxb"), folder.read("a.vxb"));
        EXPECT_EQ(folder.read("b.txt"), folder.read("a.txt"));
    }
}

TEST_F(Convert, NamesTheOutput) {
    folder.run("mkdir d.1; cp m.mqf d.1/m.v2.mqf; mkdir real; ln -s real/new link");
    for (const auto& [arguments, output] : std::array<std::array<std::string, 2>, 5>{
             {{"./m.mqf", "m.vxb"},
              {"d.1/m.v2.mqf", "d.1/m.v2.vxb"},
              {"--out-dir new/er d.1/m.v2.mqf", "new/er/m.v2.vxb"},
              {"-o 'as it.stands' m.mqf", "as it.stands"},
              {"-o link m.mqf", "real/new"}}}) {
        expect(arguments, 0);
        EXPECT_EQ(folder.read(output), wanted) << arguments;
    }
    EXPECT_TRUE(fs::is_symlink(folder.path() / "link"));
    EXPECT_EQ(convert("-o /dev/stdout m.mqf").output, wanted);
    folder.run("exec >file; echo before; '" VXBTOOL_PROGRAM "' convert -o /dev/stdout m.mqf");
    EXPECT_EQ(folder.read("file"), "before\n" + wanted);
    folder.write("real/old", "old");
    EXPECT_EQ(convert("-o /dev/fd/5/old m.mqf 5<real").status, 0);
    EXPECT_EQ(folder.read("real/old"), wanted);
}

TEST_F(Convert, TellsBadUsageFromBadInput) {
    for (const char* const arguments :
         {"", "--bogus m.mqf", "-o a --out-dir b m.mqf", "-j 0 m.mqf", "--scale 1x m.mqf",
          "--scale nan m.mqf", "-o a m.mqf d.mqf", "--depfile a m.mqf d.mqf",
          "--out-dir m.mqf m.mqf", "-o '' m.mqf", "m.mqf m.mqf", "m.mqf x/../m.mqf",
          "--hex= m.mqf d.mqf", "--hex m.vxb m.mqf", "--hex ./a --depfile a m.mqf"}) {
        EXPECT_EQ(convert(arguments).status, 2) << arguments;
    }
    EXPECT_EQ(folder.read("m.vxb"), "");

    folder.write("s.srf", "@SRF970401\n1\n9-3 0 F C 1 2 3\n");
    expect("m.mqf", 1,
           "s.srf:3: range 9-3 runs backwards\n" +
               notCorrect("s.srf", 3, "range 9-3 runs backwards"));
}

TEST_F(Convert, ReplacesOutputsOnlyWhenAllAreWhole) {
    for (const char* const name : {"m.vxb", "hex", "m.d"}) {
        folder.write(name, "old");
    }
    EXPECT_EQ(convert("--hex hex --depfile none/m.d m.mqf").status, 1);
    EXPECT_EQ(convert("--hex none/hex --depfile m.d m.mqf").status, 1);
    folder.run("cp m.mqf good.mqf; echo >> m.mqf 'GEO=none.geo'");
    EXPECT_EQ(convert("--hex hex --depfile m.d m.mqf").status, 1);
    for (const char* const name : {"m.vxb", "hex", "m.d"}) {
        EXPECT_EQ(folder.read(name), "old");
    }
    EXPECT_FALSE(leftTemporaryFiles());

    folder.run("chmod 6640 m.vxb");
    expect("-o m.vxb --hex hex --depfile m.d good.mqf", 0);
    EXPECT_EQ(folder.read("m.vxb"), wanted);
    EXPECT_EQ(fs::status(folder.path() / "m.vxb").permissions(), fs::perms{0640});
}

TEST_F(Convert, RemovesTemporaryFilesOnASignal) {
    folder.run("mkfifo hex");
    for (const int signal : {SIGTERM, SIGXCPU, SIGALRM, SIGUSR2}) {
        // The tool waits for a reader of the hex text when the VXB file is begun already.
        const TestFolder::Result result =
            folder.run("true; '" VXBTOOL_PROGRAM "' convert --hex hex m.mqf & "
                       "while ! ls .vxbtool-* >seen 2>&1; do sleep 0.01; done; kill -" +
                       std::to_string(signal) + " $!; wait $!");
        EXPECT_EQ(result.status, 128 + signal);
        EXPECT_FALSE(leftTemporaryFiles());
        EXPECT_EQ(folder.read("m.vxb"), "");
    }
}

TEST_F(Convert, ReportsAFileThatMayNotGrow) {
    const std::string report = "\nCan't write this file!\n\nFile Name:m.vxb\n";
    EXPECT_EQ(folder.run("ulimit -f 1; '" VXBTOOL_PROGRAM "' convert m.mqf").output,
              "m.vxb: the file cannot be written to its end: File too large\n" + report);
    EXPECT_FALSE(leftTemporaryFiles());
    EXPECT_THAT(folder.run("ulimit -f 1; '" MQF2VXB_PROGRAM "' m.mqf").output,
                testing::EndsWith(report));
}

TEST_F(Convert, WritesNoMessageIntoAnOutput) {
    folder.run("for i in 1 2 3 4; do sed s/g.geo/none.geo/ m.mqf >bad$i.mqf; done; "
               "exec '" VXBTOOL_PROGRAM "' convert --lint -j 4 m.mqf bad*.mqf <&- >&- 2>&-");
    EXPECT_EQ(folder.read("m.vxb"), wanted);
    folder.run("rm m.vxb; exec '" MQF2VXB_PROGRAM "' m.mqf <&- >&- 2>&-");
    EXPECT_EQ(folder.read("m.vxb"), wanted);
}

TEST_F(Convert, RefusesToOverwriteAnInput) {
    folder.run("cp m.mqf a.mqf; cp g.geo a.vxb; sed -i s/g.geo/a.vxb/ m.mqf");
    const std::string cause = "this input is also an output";
    expect("-o a.vxb m.mqf", 1, "a.vxb: " + cause + "\n" + notCorrect("a.vxb", 0, cause));
    EXPECT_EQ(folder.read("a.vxb"), folder.read("g.geo"));
    EXPECT_EQ(convert("--depfile s.srf m.mqf").status, 1);
    EXPECT_EQ(convert("m.mqf a.mqf").status, 1);  // the input is the other model's output
}

TEST_F(Convert, KnowsAFolderThatIsMountedTwice) {
    const std::string mount = "mkdir -p twice; unshare -rm sh -c \"mount --bind . twice";
    if (folder.run(mount + "\"").status != 0) {
        GTEST_SKIP() << "folders cannot be mounted here";
    }
    const std::string tool = mount + " && exec '" VXBTOOL_PROGRAM "' convert ";
    const std::string geometry = folder.read("g.geo");
    EXPECT_EQ(folder.run(tool + "-o twice/g.geo m.mqf\"").status, 1);
    EXPECT_EQ(folder.run(tool + "--hex twice/m.vxb m.mqf\"").status, 2);
    EXPECT_EQ(folder.read("g.geo"), geometry);
    EXPECT_EQ(folder.read("m.vxb"), "");
}

TEST_F(Convert, ListsTheInputsInADepfile) {
    fs::create_directory(folder.path() / "art");
    folder.run("mv *.geo *.srf *.axs *.frm *.bnd *.sqx *.clp *.pxl art; cp m.mqf art");
    const TestFolder::Result result = convert("art/m.mqf");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("try --base art"), std::string::npos) << result.output;
    expect("--base art --depfile m.d m.mqf", 0);
    EXPECT_EQ(folder.read("m.vxb"), wanted);
    const std::string depfile = folder.read("m.d");
    EXPECT_EQ(depfile.substr(0, depfile.find("\n\n")),
              "m.vxb: \\\n  m.mqf \\\n  art/0.pxl \\\n  art/1.pxl \\\n  art/g.geo \\\n  "
              "art/s.srf \\\n  art/b.bnd \\\n  art/a.axs \\\n  art/f.frm \\\n  art/0.clp \\\n  "
              "art/1.clp");
}

TEST_F(Convert, ConvertsManyModelsSideBySide) {
    folder.run("mkdir many; for i in $(seq 50); do cp m.mqf many/$i.mqf; done; "
               "echo bad > many/20.mqf; rm many/30.mqf");
    const TestFolder::Result result =
        convert("-j 8 --out-dir out $(seq 50 | sed 's,.*,many/&.mqf,')");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "many/20.mqf: the file does not begin with \"@MQF970401\"\n"
                             "\nFormat isn't correct!\n\nFile Name:many/20.mqf\nID       :bad\n"
                             "many/30.mqf: the file cannot be read: No such file or directory\n"
                             "\nCan't open this file!\n\nFile Name:many/30.mqf\n"
                             "\n2 of 50 models failed:\n  many/20.mqf\n  many/30.mqf\n");
    for (int i = 1; i <= 50; ++i) {
        const std::string name = "out/" + std::to_string(i) + ".vxb";
        EXPECT_EQ(folder.read(name), i == 20 || i == 30 ? "" : wanted) << i;
    }
    if (folder.run("script -qc true log").status != 0) {
        GTEST_SKIP() << "the machine has no pseudo-terminals, so nobody sees a progress line";
    }
    const TestFolder::Result onTerminal =
        folder.run("script -qc \"'" VXBTOOL_PROGRAM "' convert -j 1 many/1.mqf many/2.mqf\" log");
    EXPECT_EQ(onTerminal.output, "\r\x1b[K[1/2] many/1.mqf\r\x1b[K[2/2] many/2.mqf\r\x1b[K");
}

TEST_F(Convert, FailsOnWarningsWhenTheyAreErrors) {
    const TestFolder::Result result = convert("--werror m.mqf");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, testing::ContainsRegex("L047]\n0 errors, [0-9]+ warnings\n"));
    EXPECT_EQ(folder.read("m.vxb"), "");
    const auto report =
        nlohmann::json::parse(convert("--werror --json m.mqf none.mqf 2>/dev/null").output);
    EXPECT_FALSE(report["passed"]);
    EXPECT_GT(report["files"][0]["warnings"], 0);
    EXPECT_EQ(report["files"][1]["findings"][0]["file"], "none.mqf");
}

TEST_F(Convert, ReadsAndWritesTheStandardStreams) {
    EXPECT_EQ(folder.run("'" VXBTOOL_PROGRAM "' convert -o - - < m.mqf | cat > out").status, 0);
    EXPECT_EQ(folder.read("out"), wanted);
    EXPECT_EQ(folder.run("'" VXBTOOL_PROGRAM "' diff - m.mqf < out").status, 0);
}

TEST_F(Convert, LintsWithoutChangingTheResult) {
    const TestFolder::Result result = convert("--lint m.mqf");
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.output.find("s.srf:6:9: warning"), std::string::npos) << result.output;
    EXPECT_EQ(folder.read("m.vxb"), wanted);
}

TEST_F(Convert, ReadsItsInputsOnceForLintToo) {
    folder.run("mv 0.pxl image; mkfifo fifo 0.pxl");
    const std::string image = "true; cat image >0.pxl & ";
    const std::string tool = "timeout 60 '" VXBTOOL_PROGRAM "' ";
    const std::string warnings = folder.run(image + tool + "lint m.mqf").output;
    for (const auto& [pipe, model] :
         {std::pair{"fifo & ", "fifo"}, {"/dev/stdout | ", "/dev/stdin"}}) {
        const std::string made =
            folder.run(image + "cat m.mqf >" + pipe + tool + "convert --lint -o m.vxb " + model)
                .output;
        EXPECT_EQ(std::regex_replace(made, std::regex(std::string(model) + ":"), "m.mqf:"),
                  warnings);
        EXPECT_EQ(folder.read("m.vxb"), wanted);
        folder.run("rm m.vxb");
    }
}

TEST_F(Convert, KeepsControlCharactersFromTheTerminal) {
    // What terminals obey: escape sequences, also as one character or as one byte.
    const std::string controls = "\x1B[2J\xC2\x9B"
                                 "2J\x9B"
                                 "2J\x7F\b";
    folder.write(controls + ".mqf", smallModel().files().at("m.mqf"));
    folder.write("id.mqf", "@MQF" + controls + "\r\n");
    folder.write("name.mqf", smallModel().files().at("m.mqf") + "GEO=" + controls + "\n");
    folder.write("text.mqf", smallModel().files().at("m.mqf") + controls + "\n");
    folder.run("cp m.mqf '" + controls + ".vxb'");
    const std::string tool = "'" VXBTOOL_PROGRAM "' ";
    for (const char* const command :
         {"convert -j 1 --lint id.mqf name.mqf text.mqf", "lint id.mqf name.mqf text.mqf",
          "convert @.none @.none2", "convert --lint --base none @.mqf", "lint --json name.mqf",
          "check @.vxb", "check @", "info @.vxb @", "dump @.vxb", "dump @", "completion @",
          "lint -W @ m.mqf", "--@", "@", "check --json @.vxb", "convert --out-dir m.mqf/@ m.mqf"}) {
        std::string line = command;
        for (std::size_t at = 0; (at = line.find('@')) != std::string::npos;) {
            line.replace(at, 1, "\"$controls\"");
        }
        const std::string output = folder.run("controls='" + controls + "'; " + tool + line).output;
        EXPECT_NE(output, "") << command;
        for (std::size_t i = 0; i < output.size(); ++i) {
            const auto c = static_cast<unsigned char>(output[i]);
            EXPECT_TRUE(c == '\n' || (c >= ' ' && c != 0x7F && c != 0x9B))
                << command << ": " << output;
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
