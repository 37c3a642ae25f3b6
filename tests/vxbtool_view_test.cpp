#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/test_folder.h"
#include "vxbtool/shared/base64.h"
#include "vxbtool/view/page.h"
#include "vxbtool/view/page_template.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::TestFolder;
using testing::HasSubstr;

// The pages themselves are looked at in a browser, by viewer/test/page_test.mjs.

/// Runs vxbtool view in the folder, with standard error behind standard output.
TestFolder::Result runView(const TestFolder& folder, const std::string& arguments,
                           const std::string& environment = "") {
    return folder.run(environment + " '" VXBTOOL_PROGRAM "' view " + arguments);
}

TEST(ViewPage, HoldsTheModelSoThatNothingEndsItsElement) {
    const Json data{{"name", "</script>\xff<!--"}};
    EXPECT_EQ(view::filledPage("<a>@MODEL_DATA@</a><b>@MODEL_GLB@</b>", data, "glb!"),
              "<a>{\"name\":\"\\u003c/script>\xef\xbf\xbd\\u003c!--\"}</a><b>Z2xiIQ==</b>");
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64(std::string("\0\xff\x10", 3)), "AP8Q");
    EXPECT_EQ(base64("\xfb\xef"), "++8=");
    EXPECT_THROW(view::filledPage("@MODEL_GLB@", data, ""), std::logic_error);
}

TEST(View, WithoutThePageItTellsHowToGetIt) {
    if (view::pageTemplate()) {
        GTEST_SKIP() << "this build has the page";
    }
    const TestFolder folder;
    const TestFolder::Result result = runView(folder, "'" MQF2VXB_EXAMPLES "/crawler.mqf'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("MQF2VXB_BUILD_VIEWER=ON"));
}

class ViewCommand : public testing::Test {
protected:
    void SetUp() override {
        if (!view::pageTemplate()) {
            GTEST_SKIP() << "built without the page";
        }
        ASSERT_EQ(folder
                      .run("cd '" MQF2VXB_EXAMPLES "' && '" VXBTOOL_PROGRAM "' convert -o '" +
                           folder.path().string() + "/crawler.vxb' crawler.mqf")
                      .status,
                  0);
    }

    TestFolder folder;
};

TEST_F(ViewCommand, WritesThePageBesideTheFileOrWhereToldTo) {
    EXPECT_EQ(runView(folder, "crawler.vxb").output, "");
    const std::string page = folder.read("crawler.html");
    EXPECT_THAT(page, HasSubstr(R"("name":"crawler.vxb")"));
    EXPECT_EQ(page.find("@MODEL_"), std::string::npos);

    EXPECT_EQ(runView(folder, "-o named.html crawler.vxb").status, 0);
    EXPECT_EQ(folder.read("named.html"), page);
    EXPECT_EQ(runView(folder, "-o - crawler.vxb > piped.html").status, 0);
    EXPECT_EQ(folder.read("piped.html"), page);
    // The model makes the same page, but for its name.
    EXPECT_EQ(runView(folder, "--base '" MQF2VXB_EXAMPLES "' -o model.html '" MQF2VXB_EXAMPLES
                              "/crawler.mqf'")
                  .output,
              "");
    EXPECT_EQ(folder.read("model.html").size(), page.size());
}

TEST_F(ViewCommand, RefusesWhatItCannotShowAndLeavesFilesAlone) {
    folder.write("crawler.html", "kept");
    EXPECT_EQ(runView(folder, "none.vxb").output,
              "none.vxb: the file cannot be read: No such file or directory\n");
    EXPECT_EQ(runView(folder, "none.mqf").status, 1);
    EXPECT_THAT(runView(folder, "-o none/crawler.html crawler.vxb").output,
                HasSubstr("none/crawler.html: "));
    EXPECT_EQ(runView(folder, "-o ./crawler.vxb crawler.vxb").status, 2);
    EXPECT_EQ(runView(folder, "- < crawler.vxb").status, 2);
    EXPECT_EQ(runView(folder, "--open -o - crawler.vxb").status, 2);
    EXPECT_EQ(folder.read("crawler.html"), "kept");

    // What can be read of a damaged file is shown, with what check finds.
    folder.run("head -c 20000 crawler.vxb > damaged.vxb");
    const TestFolder::Result damaged = runView(folder, "damaged.vxb");
    EXPECT_EQ(damaged.status, 1);
    EXPECT_THAT(damaged.output, HasSubstr("damaged.vxb: the file has errors"));
    EXPECT_THAT(folder.read("damaged.html"), HasSubstr(R"("code":"VXB012")"));
}

TEST_F(ViewCommand, OpensThePageWithTheFirstProgramThatIsThere) {
    folder.write("show", "#!/bin/sh\necho \"shows $1\"\nexit $SHOWN\n");
    folder.run("chmod +x show");
    const std::string page = folder.path().string() + "/crawler.html";
    const std::string browser = "BROWSER=none:" + folder.path().string() + "/show";
    EXPECT_EQ(runView(folder, "--open crawler.vxb", browser + " SHOWN=0").output,
              "shows " + page + "\n");
    const TestFolder::Result failed = runView(folder, "--open crawler.vxb", browser + " SHOWN=3");
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.output, HasSubstr("show could not show crawler.html"));
    const TestFolder::Result nothing =
        runView(folder, "--open crawler.vxb", "BROWSER= PATH=" + folder.path().string());
    EXPECT_EQ(nothing.status, 1);
    EXPECT_THAT(nothing.output, HasSubstr("neither xdg-open nor a program of $BROWSER"));
}

}  // namespace
}  // namespace vxbtool
