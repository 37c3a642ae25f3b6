#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "support/memory_files.h"
#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/lint_model.h"
#include "vxbtool/shared/finding_report.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::Files;
using mqf2vxb::tests::MemoryFileSystem;

/// A case of tests/data/lint; sound.txt tells the form of those files.
struct Case {
    std::string title;
    Files files;  ///< and the report, as "report"
};

std::vector<Case> casesOf(const std::string& subject) {
    std::ifstream stream(MQF2VXB_TEST_DATA "/lint/" + subject + ".txt");
    EXPECT_TRUE(stream) << subject;
    std::vector<Case> cases;
    std::string* file = nullptr;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("=== ")) {
            cases.push_back({line.substr(4), {}});
        } else if (line.starts_with("--- ") && !cases.empty()) {
            file = &cases.back().files[line.substr(4)];
        } else if (!cases.empty()) {
            *file += line + "\n";
        }
    }
    return cases;
}

std::string imageOf(const std::string& hexadecimal) {
    mqf2vxb::tests::Words words;
    std::istringstream stream(hexadecimal);
    for (std::uint32_t word = 0; stream >> std::hex >> word;) {
        words.push_back(word);
    }
    return mqf2vxb::tests::bytesOf(words);
}

/// What lint finds in a case, which changes some files of the sound model.
FileReport lintCase(const Case& changes, const ReportOptions& options = {}) {
    Files files = changes.files;
    files.merge(Files(casesOf("sound").front().files));
    for (auto& [name, content] : files) {
        if (name.ends_with(".pxl")) {
            content = imageOf(content);
        }
    }
    const std::size_t scale = changes.title.find("scale ");
    MemoryFileSystem system(std::move(files));
    FileReport report{"m.mqf", lint::lintModel("m.mqf",
                                               scale == std::string::npos
                                                   ? 1.0F
                                                   : std::stof(changes.title.substr(scale + 6)),
                                               system)};
    selectFindings(report.findings, options);
    return report;
}

class LintTest : public testing::TestWithParam<const char*> {};

TEST_P(LintTest, ReportsAreThoseOfTheCases) {
    for (const Case& lintedCase : casesOf(GetParam())) {
        const std::vector reports{lintCase(lintedCase)};
        EXPECT_EQ(humanReport(reports, {.sourceLines = true, .colour = false}),
                  lintedCase.files.at("report"))
            << lintedCase.title;
    }
}

constexpr const char* subjects[] = {"sound",  "text",    "geometry", "materials", "hierarchy",
                                    "meshes", "motions", "faults",   "shapes"};
INSTANTIATE_TEST_SUITE_P(Subjects, LintTest, testing::ValuesIn(subjects),
                         [](const auto& subject) { return std::string(subject.param); });

TEST(LintCatalogue, EveryKindIsRaisedByACase) {
    std::string reports;
    for (const char* subject : subjects) {
        for (const Case& lintedCase : casesOf(subject)) {
            reports += lintedCase.files.at("report");
        }
    }
    for (const lint::FindingKind& kind : lint::kinds) {
        EXPECT_THAT(reports, testing::HasSubstr("[" + std::string(kind.code) + "]"));
    }
}

/// The case of equal findings: vertices 4 to 12, on lines 7 to 15, are not used.
Case equalFindings() { return casesOf("geometry").back(); }

TEST(FindingReport, FoldsEqualFindingsUnlessAllAreWanted) {
    const FileReport folded = lintCase(equalFindings());
    ASSERT_EQ(folded.findings.size(), 1U);
    EXPECT_EQ(folded.findings[0].occurrences, 9U);
    EXPECT_EQ(folded.count(mqf2vxb::Severity::warning), 9U);
    ReportOptions options;
    options.all = true;
    EXPECT_EQ(lintCase(equalFindings(), options).findings.size(), 9U);
    options.off = {"L014"};
    EXPECT_TRUE(lintCase(equalFindings(), options).findings.empty());
}

TEST(FindingReport, CountsWhatItDoesNotKeep) {
    Case crowded = casesOf("sound").front();
    std::string& geo = crowded.files["m.geo"];
    geo.replace(geo.find("4 1 2"), 1, "2504");
    for (int i = 0; i < 2500; ++i) {
        geo.insert(geo.find("0 0 1\n"), "0 0 0\n");
    }
    ReportOptions options;
    options.all = true;
    options.off = {"L030"};
    const FileReport report = lintCase(crowded, options);
    EXPECT_EQ(report.findings.size(), 1000U);
    EXPECT_EQ(report.findings.back().occurrences, 1501U);
    EXPECT_EQ(report.count(mqf2vxb::Severity::warning), 2500U);
}

TEST(FindingReport, WritesItsJsonAsDocumented) {
    const std::vector reports{lintCase(equalFindings()), FileReport{"b\xFF.vxb", {}}};
    EXPECT_EQ(nlohmann::json::parse(jsonReport("lint", reports, true)), nlohmann::json::parse(R"({
        "format": "vxbtool-findings", "version": 1, "command": "lint", "passed": false,
        "files": [
            {"file": "m.mqf", "errors": 0, "warnings": 9,
             "findings": [{"code": "L014", "severity": "warning",
                           "text": "no polygon that is drawn uses vertex 4", "file": "m.geo",
                           "line": 7, "column": 1, "occurrences": 9}]},
            {"file": "b\uFFFD.vxb", "errors": 0, "warnings": 0, "findings": []}]})"));

    ReportedFinding error{"VXB001", mqf2vxb::Severity::error, "text", "a.vxb"};
    error.offset = 0;
    error.place = "file header";
    error.found = 7;
    const auto report =
        nlohmann::json::parse(jsonReport("check", {{FileReport{"a.vxb", {error}}}}, false));
    EXPECT_FALSE(report["passed"]);
    EXPECT_EQ(report["files"][0]["findings"][0], nlohmann::json::parse(R"({
        "code": "VXB001", "severity": "error", "text": "text", "file": "a.vxb", "offset": 0,
        "place": "file header", "found": 7, "occurrences": 1})"));
}

TEST(FindingReport, KeepsControlCharactersFromTheTerminal) {
    ReportedFinding finding{"L005", mqf2vxb::Severity::warning, "\"\x1B[2J\" is ignored", "a.geo"};
    finding.line = 2;
    finding.column = 5;
    finding.source = "\t\xC3\xA4 \x1B[2J";
    EXPECT_EQ(
        humanReport({{FileReport{"a.mqf", {finding}}}}, {.sourceLines = true, .colour = false}),
        "a.geo:2:5: warning: \"?[2J\" is ignored [L005]\n"
        "  \t\xC3\xA4 ?[2J\n"
        "  \t  ^\n"
        "0 errors, 1 warning\n");
}

}  // namespace
}  // namespace vxbtool
