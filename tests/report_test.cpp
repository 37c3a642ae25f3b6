#include <gtest/gtest.h>

#include "base/diagnostics.h"
#include "files/output_word_stream.h"
#include "organise/sizes.h"
#include "support/memory_files.h"
#include "writers/animation_section.h"
#include "writers/output_layout.h"

namespace mqf2vxb::tests {
namespace {

/// The report that `action` ends with.
template <class Action>
std::string reportOf(Action action) {
    try {
        action();
    } catch (const Report& report) {
        return report.text();
    }
    return {};
}

TEST(Reports, FaultsThatNoInputCauses) {
    MemoryFileSystem files({});
    OutputWordStream stream(files, "m.vxb", nullptr);
    EXPECT_EQ(reportOf([&] { stream.checkPosition(7, "packets"); }),
              "\nLayout fault(packets:0, not 7)\n");
    EXPECT_EQ(reportOf([] { imagetsize(0x02000002, 1); }), "\nNot match(imagetsize:0x02000002)\n");

    Model model;
    model.description.fileName = "m.mqf";
    model.primitives.malprim.allocate(1);
    model.primitives.malprim[0].maltype.allocate(1);
    model.primitives.malprim[0].maltype[0].type = 0x17;
    model.primitives.malprim[0].maltype[0].polyNum = 0x0C30C30C;
    model.primitives.malprimh.allocate(1);
    EXPECT_EQ(reportOf([&] { computeLayout(model); }),
              notCorrect("m.mqf", 0, "the output would be larger than 2147483647 words"));
    model.motions.allocate(1);
    model.motions[0].packetTypeTable.allocate(1);
    model.motions[0].packetTypeTable[0].type = 0x03000002;
    OutputLayout layout;
    layout.animationSection = 0;
    layout.complementFunctionTop = 5;
    layout.controlTop = 6;
    layout.matrixTop = 6;
    EXPECT_EQ(reportOf([&] { writeAnimationSection(model, layout, stream); }),
              "\nNot match(anim:0x03000002)\n");
}

TEST(Reports, OutputsThatCannotBeCreated) {
    const std::string report = "\nCan't open this file!\n\nFile Name:";
    MemoryFileSystem files(smallModel().files());
    files.locked = "m.vxb";
    EXPECT_EQ(convertFiles(files, withHex()).report, report + "m.vxb\n");
    EXPECT_EQ(files.outputs, Files{});
    files.locked = "hex";
    EXPECT_EQ(convertFiles(files, withHex()).report, report + "hex\n");
    EXPECT_EQ(files.outputs, (Files{{"m.vxb", ""}}));
}

TEST(Reports, AFullDiskAtEveryByte) {
    ModelFiles model;
    model.geo = "3 0 1;0;1;2;0 0 1 2";
    model.srf = "1;0 0 F C";
    const Files whole = convertFiles(model, withHex()).outputs;
    const std::size_t vxbSize = whole.at("m.vxb").size();
    const std::size_t size = vxbSize + whole.at("hex").size();
    for (std::size_t room = 0; room < size; ++room) {
        MemoryFileSystem disk(model.files());
        disk.room = room;
        EXPECT_EQ(convertFiles(disk, withHex()).report,
                  std::string("\nCan't write this file!\n\nFile Name:") +
                      (room < vxbSize ? "m.vxb\n" : "hex\n"));
    }
}

TEST(Reports, ImagesThatChangeBeforeTheirDataIsRead) {
    const ModelFiles model = smallModel();
    const std::string before = model.images[0];
    const std::string changed = notCorrect("0.pxl", 0, "the file changed while it was converted");
    const auto reportAfter = [&](const std::string& later) {
        MemoryFileSystem files(model.files());
        files.later = {{"0.pxl", later}};
        return convertFiles(files).report;
    };
    EXPECT_EQ(reportAfter(before + "more"), "");
    EXPECT_EQ(reportAfter(before.substr(0, before.size() - 1)), changed);
    EXPECT_EQ(reportAfter(""), changed);
    for (const std::size_t byte : {4U, 9U, 13U}) {
        std::string later = before;
        later[byte] = static_cast<char>(later[byte] ^ 1);
        EXPECT_EQ(reportAfter(later), changed) << byte;
    }
}

TEST(Reports, KnowTheLineToBlame) {
    ModelFiles model;
    model.geo = "1 0 1;# 3;0;0 99999999999 0";
    EXPECT_EQ(convertFiles(model).place, "g.geo:5");
}

}  // namespace
}  // namespace mqf2vxb::tests
