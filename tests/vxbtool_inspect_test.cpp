#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <numeric>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "support/memory_files.h"
#include "support/session.h"
#include "support/test_folder.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::expectSession;
using mqf2vxb::tests::runIn;
using mqf2vxb::tests::TestFolder;
using nlohmann::json;

TEST(Inspect, PrintsWhatTheSessionHolds) {
    const TestFolder folder;
    folder.write("small.vxb", convertFiles(mqf2vxb::tests::smallModel()).outputs.at("m.vxb"));
    expectSession(folder, MQF2VXB_TEST_DATA "/inspect/session.txt");
}

TEST(Unpack, PrintsAndWritesWhatTheSessionHolds) {
    const TestFolder folder;
    folder.write("small.vxb", convertFiles(mqf2vxb::tests::smallModel()).outputs.at("m.vxb"));
    expectSession(folder, MQF2VXB_TEST_DATA "/unpack/session.txt");
}

TEST(Unpack, SamplesComeBackWordForWord) {
    const TestFolder folder;
    for (const std::string model : {"crawler", "crawler_groups", "crawler_strips"}) {
        for (const std::string options : {"", "--no-images "}) {
            const TestFolder::Result result =
                runIn(folder, "(cd " MQF2VXB_EXAMPLES " && vxbtool convert " + options + "-o " +
                                  (folder.path() / "m.vxb").string() + " " + model +
                                  ".mqf) && vxbtool unpack --force --verify m.vxb");
            EXPECT_EQ(result.status, 0) << model << " " << options << result.output;
        }
    }
}

/// The files of the page's whole model are its blocks behind "`name`:"; the image is its only block of
/// 32-bit words.
TEST(Document, ShowsAWholeModel) {
    std::ifstream page(MQF2VXB_MANUALS "/../model-files.md");
    std::map<std::string, std::string> blocks;
    std::string name;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("```")) {
            inside = !inside;
            name = inside ? name : "";
        } else if (inside) {
            const bool isWords = line.find_first_not_of("0123456789abcdef") == 8;
            blocks[name.empty() && isWords ? "gate.words" : name] += line + "\n";
        } else if (line.starts_with("`gate.") && line.ends_with("`:")) {
            name = line.substr(1, line.size() - 3);
        }
    }
    const TestFolder folder;
    for (const auto& [file, text] : blocks) {
        if (!file.empty()) {
            folder.write(file, text);
        }
    }
    std::istringstream stream(blocks.at("gate.words"));
    mqf2vxb::tests::Words words;
    for (std::uint32_t word = 0; stream >> std::hex >> word;) {
        words.push_back(word);
    }
    folder.write("gate.pxl", mqf2vxb::tests::bytesOf(words));
    const TestFolder::Result result =
        runIn(folder, "vxbtool lint --werror gate.mqf && vxbtool convert gate.mqf && "
                      "vxbtool check --werror gate.vxb");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "");
}

/// Each command edits one thing of the sample, and the whole report is what it says.
TEST(Diff, TellsWhatBecameOfTheModel) {
    const TestFolder folder;
    const TestFolder::Result made = runIn(folder, "cp " MQF2VXB_EXAMPLES "/* " MQF2VXB_TEST_DATA
                                                  "/diff/changed . && vxbtool convert crawler.mqf");
    ASSERT_EQ(made.status, 0) << made.output;
    expectSession(folder, MQF2VXB_TEST_DATA "/diff/session.txt");
}

/// What a command prints as JSON about a file of the folder.
json jsonOf(const TestFolder& folder, const std::string& command) {
    const TestFolder::Result result = runIn(folder, command + " --json model.vxb");
    EXPECT_EQ(result.status, 0) << result.output.substr(0, 1000);
    return json::parse(result.output);
}

std::size_t sum(const json& objects, const char* member) {
    return std::accumulate(objects.begin(), objects.end(), std::size_t{0},
                           [&](std::size_t total, const json& object) {
                               return total + object[member].get<std::size_t>();
                           });
}

TEST(Inspect, CommandsAgreeOnTheSample) {
    for (const std::string model : {"crawler", "crawler_groups", "crawler_strips"}) {
        const TestFolder folder;
        const auto made = folder.run("cd " MQF2VXB_EXAMPLES " && " VXBTOOL_PROGRAM " convert -o " +
                                     (folder.path() / "model.vxb").string() + " " + model + ".mqf");
        ASSERT_EQ(made.status, 0) << made.output;
        EXPECT_TRUE(jsonOf(folder, "vxbtool check")["passed"]) << model;
        const json info = jsonOf(folder, "vxbtool info")["files"][0];
        const json dump = jsonOf(folder, "vxbtool dump");
        EXPECT_EQ(info["words"], folder.read("model.vxb").size() / 4);
        EXPECT_EQ(dump["words"], info["words"]);
        EXPECT_EQ(sum(info["sections"], "words"), info["words"]);
        EXPECT_EQ(sum(dump["parts"], "words"), info["words"]);
        EXPECT_EQ(sum(info["polygons"]["forms"], "polygons"), info["polygons"]["number"]);
        std::size_t polygons = 0, points = 0, coordinates = 0, images = 0;
        for (const json& part : dump["parts"]) {
            polygons += part.value("polygons", json::array()).size();
            points += part.value("points", json::array()).size();
            coordinates += part.contains("matrix") ? 1 : 0;
            images += part.contains("image") ? 1 : 0;
            EXPECT_FALSE(part.contains("notDecoded")) << model << ": " << part["part"];
        }
        EXPECT_EQ(polygons, info["polygons"]["number"]);
        EXPECT_EQ(coordinates, info["coordinates"].size());
        EXPECT_EQ(images, info["images"].size());
        // The calculated points are twins of the shared ones.
        const auto number = [&](const char* which) {
            return info[which]["independent"].get<std::size_t>() +
                   2 * info[which]["shared"].get<std::size_t>();
        };
        EXPECT_EQ(points, number("vertices") + number("normals"));
        const auto text = runIn(folder, "vxbtool dump model.vxb | grep -c '^ *[0-9]'");
        EXPECT_EQ(text.output, std::to_string(info["words"].get<std::size_t>()) + "\n");
    }
}

}  // namespace
}  // namespace vxbtool
