#include <gtest/gtest.h>

#include <array>
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

/// Models of the same words, or nearly, in another order that shows.
TEST(DiffCases, WhatLooksAnotherWayIsNoOtherOrder) {
    const auto two = [](const std::string& matrix, const std::string& assignments) {
        return "frm =NULL;2;4096 0 0 0 4096 0 0 0 4096 0 0 0 0 0 0 0;" + matrix +
               " 0 0 0 0 0 0 0;" + assignments + "\n";
    };
    const std::string strip =
        "geo 7 1 5;0 0 0;0 9 0;9 0 0;9 9 0;20 0 0;20 9 0;30 0 0;0 0 1;0 0 1 2 0 0 0 0 0;"
        "0 1 2 3 0 0 0 0 0;0 2 3 4 0 0 0 0 0;0 3 4 5 0 0 0 0 0;0 4 5 6 0 0 0 0 0\n"
        "srf 1;0-4 0 F C 1 2 3\n";
    const auto triangle = [](const std::string& corners, const std::string& flag) {
        return "geo 3 1 1;0 0 0;0 9 0;9 0 0;0 0 1;0 " + corners + " 0 0 0 0 0\nsrf 1;0 " + flag +
               " F C 1 2 3\n";
    };
    const std::string mirror = two("-4096 0 0 0 4096 0 0 0 4096", "0 1 0;1 2 1-2");
    const std::string turned = two("4096 0 0 0 0 -4096 0 4096 0", "0 1 0;1 2 1-2");
    const std::string flat = "4096 0 0 0 4096 0 0 0 4096";
    const std::string quadrangle = "geo 4 1 1;0 0 0;0 9 0;9 0 0;9 9 0;0 0 1;1 0 1 2 3 0 0 0 0\n";
    const std::string left = "pxl 2 / 00000040 00020002 1 1\n";
    const std::string right = "pxl 2 / 00000041 00020002 2 2\n";
    const std::string shared = "shared polygons: shared ";
    const std::array<std::array<std::string, 3>, 5> cases{{
        {strip + "bnd 2;3 0 1 2;2 3 4\n", strip + "bnd 2;2 0 1;3 2 3 4\n",
         "polygon-winding no coordinate: lit flat strips: 2 got the corners the other way around [2]\n"},
        {triangle("0 1 2", "1") + mirror, triangle("1 2 0", "1") + mirror,
         "polygon-winding " + shared +
             "unlit flat triangles: 1 got the corners the other way around\n"},
        {triangle("0 1 2", "0") + turned, triangle("1 2 0", "0") + turned,
         "polygon-numbers " + shared +
             "lit flat triangles: 1 got a normal of another coordinate\n"},
        {triangle("0 1 2", "0") + two(flat, "0 3 0-2;1 3 0-2"),
         triangle("0 1 2", "0") + two(flat, "0 3 0-2;1 3 0-2;0 3 0-2"),
         "polygon-added coordinates 0, 0, 1: lit flat triangles: 1 added\n"
         "polygon-removed coordinates 0, 1: lit flat triangles: 1 removed\n"},
        {quadrangle + "srf 1;0 1 F T 0 0 0 1 0 0 1 1 1\n" + left + right,
         quadrangle + "srf 1;0 1 F T 1 0 0 1 0 0 1 1 1\n" + right + left,
         "image-order images: lie over each other in another order: 2 columns of image memory differ "
         "[2]\n"},
    }};
    for (const auto& [before, after, expected] : cases) {
        const std::string actual = told(fileOfLines(before), fileOfLines(after));
        EXPECT_EQ(actual.substr(0, expected.size()), expected) << actual;
    }
}

}  // namespace
}  // namespace vxbtool::diff_cases
