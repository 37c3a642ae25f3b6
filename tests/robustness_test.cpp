#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <limits>
#include <new>
#include <optional>
#include <regex>
#include <set>
#include <utility>

#include "base/diagnostics.h"
#include "model/model.h"
#include "run/convert.h"
#include "support/memory_files.h"
#include "support/random_model.h"

namespace {

/// How many allocations still succeed before one fails.
thread_local std::size_t allocationsLeft = std::numeric_limits<std::size_t>::max();
/// Bytes asked for so far.
thread_local std::size_t allocated = 0;

}  // namespace

// Not inlined: the compiler would see a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
    allocated += size;
    if (allocationsLeft-- == 0) {
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocationsLeft-- == 0 ? nullptr : std::malloc(size != 0 ? size : 1);
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
    EXPECT_EQ(done.outputs.size(),
              done.report.empty() || (whileWriting && !done.outputs.empty()) ? 1U : 0U)
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
        for (const std::string& other :
             {model.at("0.pxl"), std::string(100000, ' '), std::string(1000, '\n'),
              std::string(1000, '#'), std::string(1000, '\0')}) {
            for (const std::string& contents : {other, text + other, text.substr(0, 11) + other}) {
                Files files = model;
                files[name] = contents;
                expectSoundEnd(convertFiles(files), name);
            }
        }
    }
}

/// The report of a conversion whose allocation number `n` fails; nothing when it has no such one.
std::optional<std::string> reportWithout(std::size_t n, MemoryFileSystem& files) {
    const auto restore = [n] {
        return std::exchange(allocationsLeft, std::numeric_limits<std::size_t>::max()) > n;
    };
    const RunOptions options = withHex();
    allocationsLeft = n;
    try {
        convert(options, "m.mqf", files, files);
    } catch (const Report& report) {
        restore();
        return report.text();
    }
    return restore() ? std::optional("") : std::nullopt;
}

TEST(Robustness, EveryAllocationThatFailsIsReported) {
    std::set<std::string> reports;
    for (const Files& model : models()) {
        const Conversion whole = convertFiles(model, withHex());
        std::optional<std::string> report = "";
        for (std::size_t n = 0; report; ++n) {
            MemoryFileSystem files(model);
            report = reportWithout(n, files);
            reports.insert(std::regex_replace(report.value_or(""),
                                              std::regex("(Size   |Number ):.*"), "$1:?"));
            // A standard algorithm may do with less memory than it asked for.
            ASSERT_TRUE(report.value_or("") != "" || files.outputs == whole.outputs) << n;
        }
    }
    const auto table = [](const std::string& verb, const std::string& name) {
        return "\nCan't " + verb + "!\n\n-- " + name + " " + verb +
               " --\nSize   :?\nNumber :?\nAddress:0x00000000\n";
    };
    std::set<std::string> expected{"",
                                   "\nCan't malloc!\n",
                                   "\nCan't malloc(check2:malprimh)\n",
                                   "\nCan't realloc(check2:malprimh)\n",
                                   "\nCan't malloc(check2:primh->maltype)\n",
                                   "\nCan't malloc(check2:malsprimh.maltype)\n"};
    for (const char* const name :
         {"PXL", "CLP", "Vertex", "Normal", "Polygon", "Pivot", "Coordinate", "Mesh",
          "Animation Index", "Animation Sequence Header", "Material", "Primitive Body",
          "Animation Sequence", "Animation Packet Type", "Animation Packet",
          "Coordinate's Object Name", "Primitive Body's Type", "Mesh's Polygon Index"}) {
        expected.insert(table("malloc", name + std::string(" Data Base")));
    }
    for (const char* const name :
         {"Material", "Primitive Body", "Animation Sequence", "Animation Packet Type",
          "Animation Packet", "Primitive Body's Type", "Vertex's Coordinate Index"}) {
        expected.insert(table("realloc", name + std::string(" Data Base")));
    }
    EXPECT_EQ(reports, expected);
}

TEST(Robustness, AnAllocationReportTellsSizeAndNumber) {
    Table<VertexRecord> vertices("Vertex Data Base");
    try {
        vertices.allocate(std::size_t{1} << 62U);
        ADD_FAILURE() << "memory was had";
    } catch (const Report& report) {
        EXPECT_EQ(report.text(), "\nCan't malloc!\n\n-- Vertex Data Base malloc --\nSize   :" +
                                     std::to_string(sizeof(VertexRecord)) +
                                     " byte\nNumber :4611686018427387904\nAddress:0x00000000\n");
    }
}

/// A model with everything that comes in numbers, `size` of each.
ModelFiles manyOfEverything(std::size_t size) {
    const auto counted = [size](const std::string& form) {
        std::string text;
        for (std::size_t i = 0; i < size; ++i) {
            std::string line = form;
            for (const auto& [mark, value] :
                 {std::pair{'%', i}, {'+', (i + 1) % size}, {'/', i / 2}}) {
                for (std::size_t at = 0; (at = line.find(mark)) != std::string::npos;) {
                    line.replace(at, 1, std::to_string(value));
                }
            }
            text += line;
        }
        return text;
    };
    const std::string number = std::to_string(size);
    ModelFiles model;
    model.geo = number + " 1 " + number + ";" + counted("% 1 2;") + "0 0 1;" +
                counted("0 % % + 0 0 0 0 0;");
    model.srf = number + ";" + counted("% 0 F C 1 2 3;");
    model.axs = number + ";" + counted("% 1 2 3;");
    model.frm =
        "=NULL;" + number + ";" + counted("1 0 0 0 1 0 0 0 1 0 0 0 0 0 0 /;") + counted("% 1 %;");
    model.bnd = number + ";" + counted("1 %;");
    model.clp = {"COORDINATE;1;0 0 l0;" + counted("l%;SEQ 1 ps0r0t9 %;GOTO l+ 0x1 0x1;") +
                 "TYPE ps0r0t9;" + counted("% 2 3;")};
    return model;
}

TEST(Robustness, MemoryGrowsWithTheModel) {
    const auto bytesFor = [](std::size_t size) {
        MemoryFileSystem files(manyOfEverything(size).files());
        allocated = 0;
        const Conversion done = convertFiles(files);
        EXPECT_EQ(done.report, "");
        return allocated;
    };
    EXPECT_LT(bytesFor(1600), 5 * bytesFor(400));
}

TEST(Robustness, ConversionsSideBySideDoNotTouchEachOther) {
    constexpr std::uint32_t seedNum = 120;
    const auto convertAll = [] {
        std::vector<Files> outputs;
        for (std::uint32_t seed = 1; seed <= seedNum; ++seed) {
            outputs.push_back(
                convertFiles(seed % 3 == 0 ? damagedModel(seed) : randomModel(seed).files())
                    .outputs);
        }
        return outputs;
    };
    auto one = std::async(std::launch::async, convertAll);
    auto other = std::async(std::launch::async, convertAll);
    const std::vector<Files> alone = convertAll();
    EXPECT_EQ(one.get(), alone);
    EXPECT_EQ(other.get(), alone);
}

}  // namespace
}  // namespace mqf2vxb::tests
