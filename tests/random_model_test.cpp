#include "support/random_model.h"

#include <gtest/gtest.h>

#include <set>

#include "base/diagnostics.h"
#include "model/model.h"
#include "run/convert.h"
#include "vxb/vxb_reader.h"
#include "writers/model_writer.h"

namespace mqf2vxb::tests {
namespace {

TEST(RandomModels, ReadBackWithoutAnError) {
    std::set<PrimitiveTypeCode> codes;
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
        const ModelFiles model = randomModel(seed);
        const Conversion done = convertFiles(model, withHex());
        ASSERT_EQ(done.report, "") << "seed " << seed;
        const VxbFile file = readVxb(done.outputs.at("m.vxb"));
        for (const Finding& found : file.findings.kept()) {
            EXPECT_NE(found.kind->severity, Severity::error)
                << "seed " << seed << ": " << found.line();
        }
        EXPECT_EQ(file.words, between(done.hex(), "/* ID */")) << "seed " << seed;
        for (const PacketGroup& group : file.packetGroups) {
            codes.insert(type_code::form(group.code));
        }
    }
    EXPECT_EQ(codes.size(), 66U);
}

class Watcher final : public InputObserver {
    void opened(const std::string& /*name*/, std::string_view /*contents*/) override {}
    void line(std::string_view /*line*/) override {}
    void scanned(bool /*complete*/, std::string_view /*rest*/) override {}
    void token(TokenKind /*kind*/, const char* /*start*/, std::string_view /*text*/) override {}
    void number(std::int32_t /*value*/, std::string_view /*rest*/) override {}
    void unread(const char* /*rest*/) override {}
};

/// The file or the report that the inputs lead to.
std::string result(MemoryFileSystem& files, Inputs inputs) {
    try {
        Model model;
        readModel("m.mqf", inputs, model);
        RunOptions options;
        options.outputName = "m.vxb";
        organiseModel(options, model);
        writeModel(model, options, files, files);
        return files.outputs.at("m.vxb");
    } catch (const Report& report) {
        return report.text().substr(0, report.text().find("Top address"));
    }
}

/// With an observer every line takes the general scan: the fast one must find the same.
TEST(RandomModels, DamagedFilesReadAlikeOnTheFastWay) {
    Watcher watcher;
    for (std::uint32_t seed = 1; seed <= 1200; ++seed) {
        const Files damaged = damagedModel(seed);
        MemoryFileSystem files(damaged);
        const std::string fast = result(files, Inputs(files));
        ASSERT_EQ(fast, result(files, Inputs(files, watcher))) << "seed " << seed;
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
