#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <set>

#include "driver/diagnostics.h"
#include "model/model.h"
#include "support/memory_files.h"

namespace {

/// How many allocations still succeed before one fails.
thread_local std::size_t allocationsLeft = std::numeric_limits<std::size_t>::max();

}  // namespace

// Not inlined: the compiler would see a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (allocationsLeft-- == 0) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace mqf2vxb::tests {
namespace {

/// The models that the tests below damage: between them they have files of every kind.
std::vector<Files> models() {
    ModelFiles groups = smallModel();
    groups.bnd.clear();
    groups.frm.replace(0, 5, "=g.sqx");
    groups.frm.replace(groups.frm.find("1 4 0-3"), std::string::npos, "1 2 a,b;2 1 c");
    groups.sqx = "3;a 2 0 1;b 2 2-3;c 3 4,5 6";
    return {smallModel().files(), groups.files()};
}

/// A conversion ends with a report or with a file; without a file there is no half of one, unless
/// the fault is one that only writing meets.
void expectSoundEnd(const Conversion& done, const std::string& what) {
    const bool whileWriting = done.report.rfind("\nNot match(", 0) == 0 ||
                              done.report == "\nNot suitable texture\n" ||
                              done.report.rfind("\nUnknown the GEOflag", 0) == 0;
    EXPECT_EQ(done.outputs.size(), done.report.empty() || (whileWriting && !done.outputs.empty()) ? 1U : 0U)
        << what << done.report;
    EXPECT_TRUE(done.report.empty() || done.report.front() == '\n') << what;
}

TEST(Robustness, FilesCutAtEveryLength) {
    for (const Files& model : models()) {
        ASSERT_EQ(convertFiles(model).report, "");
        for (const auto& [name, text] : model) {
            for (std::size_t length = 0; length < text.size(); ++length) {
                Files files = model;
                files[name].resize(length);
                expectSoundEnd(convertFiles(files), name + " cut to " + std::to_string(length));
            }
        }
    }
}

TEST(Robustness, FilesWithEveryBytePatched) {
    for (const Files& model : models()) {
        for (const auto& [name, text] : model) {
            for (std::size_t i = 0; i < text.size(); ++i) {
                for (const char patch : {'\0', '\n', '#', '-', '9', ' ', 'x', '\xFF'}) {
                    Files files = model;
                    files[name][i] = patch;
                    expectSoundEnd(convertFiles(files), name + " patched at " + std::to_string(i));
                }
            }
        }
    }
}

TEST(Robustness, FilesMixedUpAndEmpty) {
    const Files model = models().front();
    for (const auto& [name, text] : model) {
        for (const std::string& other : {model.at("0.pxl"), std::string(100000, ' '), std::string(1000, '\n'),
                                         std::string(1000, '#'), std::string(1000, '\0')}) {
            for (const std::string& contents : {other, text + other, text.substr(0, 11) + other}) {
                Files files = model;
                files[name] = contents;
                expectSoundEnd(convertFiles(files), name);
            }
        }
    }
}

/// The report of a table that could not be made, or could not be enlarged.
std::string tableReport(const std::string& verb, const std::string& table, std::size_t size, std::size_t number) {
    return "\nCan't " + verb + "!\n\n-- " + table + " " + verb + " --\nSize   :" + std::to_string(size) +
           " byte\nNumber :" + std::to_string(number) + "\nAddress:0x00000000\n";
}

TEST(Robustness, EveryAllocationThatFailsIsReported) {
    std::set<std::string> reports;
    for (const Files& model : models()) {
        const Conversion whole = convertFiles(model, withHex());
        bool failed = true;
        for (std::size_t n = 0; failed; ++n) {
            MemoryFileSystem files(model);
            const RunOptions options = withHex();
            std::string report;
            allocationsLeft = n;
            const Conversion done = convertFiles(files, options);
            failed = allocationsLeft > n;
            allocationsLeft = std::numeric_limits<std::size_t>::max();
            ASSERT_EQ(done.report.empty(), !failed || done.outputs == whole.outputs) << n;
            reports.insert(done.report);
        }
    }
    reports.erase("");
    const std::set<std::string> expected{
        "\nCan't malloc!\n",
        "\nCan't malloc(check2:malprimh)\n",
        "\nCan't realloc(check2:malprimh)\n",
        tableReport("malloc", "PXL Data Base", sizeof(ImageRecord), 2),
        tableReport("malloc", "CLP Data Base", sizeof(MotionRecord), 2),
        tableReport("malloc", "Vertex Data Base", sizeof(VertexRecord), 7),
        tableReport("malloc", "Normal Data Base", sizeof(NormalRecord), 2),
        tableReport("malloc", "Polygon Data Base", sizeof(PolygonRecord), 5),
        tableReport("malloc", "Pivot Data Base", sizeof(PivotRecord), 2),
        tableReport("malloc", "Coordinate Data Base", sizeof(CoordinateRecord), 3),
        tableReport("malloc", "Mesh Data Base", sizeof(MeshRecord), 4),
        tableReport("malloc", "Animation Index Data Base", sizeof(AnimationIndexRecord), 1)};
    EXPECT_EQ(reports, expected);
}

}  // namespace
}  // namespace mqf2vxb::tests
