#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/scene_cases.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/diff/changes.h"
#include "vxbtool/diff/compare.h"

namespace vxbtool::diff_cases {
namespace {

using namespace mqf2vxb::tests;
using mqf2vxb::VxbFile;

std::string told(const VxbFile& before, const VxbFile& after) {
    diff::Changes changes(false);
    diff::compareCoordinates(before, after, changes);
    diff::comparePolygons(before, after, changes);
    diff::compareMotions(before, after, changes);
    diff::compareImages(before, after, changes);
    std::string text;
    for (const diff::Change& change : changes.kept()) {
        text += std::string(diff::nameOf(change.kind)) + " " + change.place + ": " + change.text;
        text += change.count > 1 ? " [" + std::to_string(change.count) + "]\n" : "\n";
    }
    return text;
}

/// The file begins with a model. "= title" begins an edit of it: lines "s|OLD|NEW|" change what stands
/// once in the model. Behind "-" stands what is told, there and back.
TEST(DiffCases, AnEditIsToldAsWhatItIs) {
    std::ifstream file(MQF2VXB_TEST_DATA "/diff/cases.txt");
    std::string model, edited, title, expected;
    std::size_t number = 0;
    const auto finish = [&] {
        if (!title.empty()) {
            const VxbFile before = fileOfLines(model);
            const VxbFile after = fileOfLines(edited);
            EXPECT_EQ(told(before, after) + "-\n" + told(after, before), expected) << title;
            EXPECT_EQ(told(after, after), "") << title;
            ++number;
        }
        edited = model;
        expected.clear();
    };
    bool behind = false;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("= ")) {
            finish();
            title = line;
            behind = false;
        } else if (behind) {
            expected += line + "\n";
        } else if (line == "-") {
            behind = true;
        } else if (title.empty()) {
            model += line + "\n";
        } else {
            const std::size_t middle = line.find('|', 2);
            const std::string old = line.substr(2, middle - 2);
            const std::size_t at = edited.find(old);
            ASSERT_NE(at, std::string::npos) << line;
            ASSERT_EQ(edited.find(old, at + 1), std::string::npos) << line;
            edited.replace(at, old.size(), line.substr(middle + 1, line.size() - middle - 2));
        }
    }
    finish();
    EXPECT_GT(number, 15U);
}

}  // namespace
}  // namespace vxbtool::diff_cases
