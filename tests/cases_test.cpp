#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "support/model_cases.h"
#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

class Cases : public testing::TestWithParam<const char*> {};

/// Whole models in, words or the whole text of the report out. A model that is refused leaves no
/// output behind, unless the fault shows in the writing only.
TEST_P(Cases, Convert) {
    const std::vector<ModelCase> cases = readCases(GetParam() + std::string(".txt"));
    EXPECT_FALSE(cases.empty());
    for (const ModelCase& c : cases) {
        const Conversion done = convertFiles(c.files, c.options);
        EXPECT_EQ(reportLine(done.report), c.report) << c.name;
        for (const auto& [place, words] : c.words) {
            EXPECT_EQ(show(wordsAt(done, place)), show(words)) << c.name << ", " << place;
        }
        if (done.report.empty()) {
            const VxbFile file = readVxb(bytesOf(done.words()));
            EXPECT_EQ(file.findings.count(Severity::error), 0U)
                << c.name << ": " << file.findings.kept()[0].line();
        }
        std::string created;
        for (const auto& [name, text] : done.outputs) {
            created += (created.empty() ? "" : " ") + name;
            EXPECT_TRUE(text.empty() || !c.words.empty()) << c.name << " wrote to " << name;
        }
        EXPECT_TRUE(created == c.created || c.report.empty()) << c.name << " created " << created;
    }
}

INSTANTIATE_TEST_SUITE_P(Models, Cases,
                         testing::Values("images", "layout", "motions", "organisation", "reports",
                                         "reports_motions", "strips", "textures"),
                         [](const auto& subject) { return std::string(subject.param); });

TEST(Model, HexTextHoldsTheSameWordsWithTheirComments) {
    const Conversion done = convertFiles(smallModel(), withHex());
    std::ifstream file(MQF2VXB_TEST_DATA "/small_model.hex");
    const std::string expected{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(done.hex(), expected);
    EXPECT_EQ(show(done.words()), show(between(done.hex(), "/* ID */")));
    EXPECT_EQ(show(done.words()), show(convertFiles(smallModel()).words()));
}

TEST(Model, FilesAreReadInTheirOrder) {
    ModelFiles model = smallModel();
    model.frm.replace(0, 5, "=g.sqx");
    model.frm.erase(model.frm.find("1 4 0-3"));
    model.sqx = "0";
    model.bnd.clear();
    EXPECT_EQ(convertFiles(model).opened,
              (std::vector<std::string>{"m.mqf", "0.pxl", "1.pxl", "g.geo", "s.srf", "a.axs",
                                        "f.frm", "g.sqx", "0.clp", "1.clp", "0.pxl", "1.pxl"}));
    Files files = smallModel().files();
    files["m.mqf"] =
        "# x\n\n@MQF970401\nGEO=no.geo\n GEO=x\nGEO=\tg.geo x\nsrf=x\nSRF=s.srf\nSQD=gone\nXYZ\nNTEX=0\n"
        "TEX[0]=x\nNTEX=2\nTEX[1]=1.pxl\n#\nTEX[0]=x\nNTEX=2\nTEX[1]=0.pxl\n\nTEX[0]=1.pxl\nNCLP=0";
    EXPECT_EQ(
        convertFiles(files).opened,
        (std::vector<std::string>{"m.mqf", "1.pxl", "0.pxl", "g.geo", "s.srf", "1.pxl", "0.pxl"}));
}

}  // namespace
}  // namespace mqf2vxb::tests
