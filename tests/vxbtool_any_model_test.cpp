#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/random_model.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/dump/dump.h"
#include "vxbtool/info/summary.h"
#include "vxbtool/lint/catalogue.h"
#include "vxbtool/lint/lint_model.h"
#include "vxbtool/shared/json_output.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::Conversion;
using mqf2vxb::tests::MemoryFileSystem;
using mqf2vxb::tests::Words;

/// The lines of a text without their ends.
std::vector<std::string> textLines(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);) {
        result.push_back(line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0)));
    }
    return result;
}

/// Says what is wrong with the place that a finding names; nothing when it is there.
std::string wrongPlace(const ReportedFinding& finding, const mqf2vxb::tests::Files& files) {
    const auto file = files.find(finding.file);
    if (file == files.end()) {
        // Only the report that a file cannot be opened may name one that is not there.
        return finding.severity == mqf2vxb::Severity::error ? "" : "no such file";
    }
    if (finding.line == 0) {
        return "";
    }
    const std::vector<std::string> text = textLines(file->second);
    // A file that is too short is blamed on the line behind its last one.
    if (finding.line > static_cast<std::int64_t>(text.size()) + 1) {
        return "no such line";
    }
    const std::string line = finding.line <= static_cast<std::int64_t>(text.size())
                                 ? text[static_cast<std::size_t>(finding.line) - 1]
                                 : "";
    if (finding.source != line) {
        return "shows \"" + finding.source + "\" for \"" + line + "\"";
    }
    return finding.column > static_cast<std::int64_t>(line.size()) + 1 ? "no such column" : "";
}

TEST(AnyModel, LintNamesPlacesThatAreThereAndAgreesWithTheConverter) {
    std::set<std::string> codes;
    for (const lint::FindingKind& kind : lint::kinds) {
        codes.emplace(kind.code);
    }
    std::set<std::string> seen;
    for (std::uint32_t seed = 1; seed <= 500; ++seed) {
        MemoryFileSystem files(mqf2vxb::tests::damagedModel(seed));
        const std::vector<ReportedFinding> findings = lint::lintModel("m.mqf", 1, files);
        const Conversion done = convertFiles(files);
        const auto anyOf = [&](auto holds) {
            return std::any_of(findings.begin(), findings.end(), [&](const auto& finding) {
                return finding.severity == mqf2vxb::Severity::error && holds(finding);
            });
        };
        EXPECT_EQ(anyOf([](const auto&) { return true; }), !done.report.empty())
            << "seed " << seed << done.report;
        // Where the converter knows the line, lint has it too.
        if (!done.report.empty() && !done.place.ends_with(":0")) {
            EXPECT_TRUE(anyOf([&](const auto& finding) {
                return finding.file + ":" + std::to_string(finding.line) == done.place;
            })) << "seed "
                << seed << " " << done.place;
        }
        for (const ReportedFinding& finding : findings) {
            EXPECT_TRUE(codes.contains(finding.code)) << finding.code;
            EXPECT_EQ(wrongPlace(finding, files.inputs), "")
                << "seed " << seed << ": " << finding.file << ":" << finding.line << ":"
                << finding.column << " " << finding.text;
            seen.insert(finding.code);
        }
    }
    EXPECT_GT(seen.size(), 20U);
}

/// What a function writes to a TextOutput.
template <class Write>
std::string written(Write write) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const file = open_memstream(&text, &size);
    TextOutput output(file);
    write(output);
    output.finish();
    std::fclose(file);
    std::string result(text, size);
    std::free(text);
    return result;
}

/// What every view of a file has to hold, however damaged it is: each word once, and in JSON the
/// parts side by side.
void expectWholeViews(const mqf2vxb::VxbFile& file, const std::string& what) {
    SCOPED_TRACE(what);
    const std::string text =
        written([&](TextOutput& output) { writeDump(file, WantedSections{}, output); });
    std::size_t next = 0;
    for (const std::string& line : textLines(text)) {
        if (line.starts_with(' ') && line.find_first_of("0123456789") < 8) {
            char* end = nullptr;
            EXPECT_EQ(std::strtoul(line.c_str(), &end, 10), next);
            ASSERT_LT(next, file.words.size());
            EXPECT_EQ(std::strtoul(end, nullptr, 16), file.words[next]);
            ++next;
        }
    }
    EXPECT_EQ(next, file.words.size());

    const auto dump = nlohmann::json::parse(written([&](TextOutput& output) {
        JsonOutput json(output);
        writeDump("x.vxb", file, WantedSections{}, json);
    }));
    std::size_t words = 0;
    for (const auto& part : dump["parts"]) {
        EXPECT_EQ(part["offset"], words);
        words += part["words"].get<std::size_t>();
    }
    EXPECT_EQ(words, file.words.size());

    const FileSummary summary = summarise(file);
    EXPECT_EQ(
        std::accumulate(summary.sectionWords.begin(), summary.sectionWords.end(), std::size_t{0}),
        file.words.size());
    std::size_t polygons = 0;
    for (const auto& [code, form] : summary.forms) {
        polygons += form.polygons;
    }
    EXPECT_EQ(polygons, summary.polygons);
    std::set<std::uint32_t> rows;
    for (const TreeRow& row : summary.tree) {
        EXPECT_TRUE(rows.insert(row.coordinate).second) << "coordinate " << row.coordinate;
    }
    EXPECT_EQ(rows.size(), file.coordinates.size());
}

TEST(AnyModel, ViewsHoldEveryWordOfSoundAndDamagedFiles) {
    for (std::uint32_t seed = 1; seed <= 60; ++seed) {
        const Words sound = convertFiles(mqf2vxb::tests::randomModel(seed)).words();
        expectWholeViews(mqf2vxb::readVxb(mqf2vxb::tests::bytesOf(sound)),
                         "seed " + std::to_string(seed));
        std::uint32_t state = seed;
        const auto random = [&] { return (state = state * 1664525U + 1013904223U) >> 8U; };
        for (int damage = 0; damage < 4; ++damage) {
            Words words = sound;
            const std::size_t place = random() % std::min<std::size_t>(words.size(), 300);
            const std::uint32_t values[] = {0,          1,        0xFFFFFFFF,
                                            0x80000000, random(), words[place] + 1};
            words[place] = values[random() % std::size(values)];
            expectWholeViews(mqf2vxb::readVxb(mqf2vxb::tests::bytesOf(words)),
                             "seed " + std::to_string(seed) + ", word " + std::to_string(place));
        }
    }
}

}  // namespace
}  // namespace vxbtool
