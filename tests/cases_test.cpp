#include <gtest/gtest.h>

#include "support/model_cases.h"

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
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace mqf2vxb::tests
