#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <sstream>

#include "support/random_model.h"
#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

constexpr std::uint32_t seedNum = 120;

/// The lines behind a file's ID line, each with its line feed, rewritten one by one.
std::string rewritten(const std::string& text,
                      const std::function<std::string(const std::string&)>& rewrite) {
    std::istringstream in(text);
    std::string line;
    std::getline(in, line);
    std::string result = line + "\n";
    while (std::getline(in, line)) {
        result += rewrite(line + "\n");
    }
    return result;
}

std::string replaced(std::string text, std::string_view old, std::string_view with) {
    for (std::size_t at = text.find(old); at != std::string::npos;
         at = text.find(old, at + with.size())) {
        text.replace(at, old.size(), with);
    }
    return text;
}

bool isText(const std::string& name) { return !name.ends_with(".pxl"); }
/// The files that are read by words: an empty line before a count or a parent counts as 0 there.
bool isToken(const std::string& name) {
    return name.ends_with(".frm") || name.ends_with(".sqx") || name.ends_with(".bnd");
}

/// A GEO file with each number written at greater length, and more behind them on the line.
std::string longNumbers(const std::string& text) {
    bool first = true;  // the line of the counts
    const std::string result = rewritten(text, [&](const std::string& line) {
        std::istringstream in(line);
        std::string numbers;
        const bool real = !first && std::count(line.begin(), line.end(), ' ') == 2;
        first = false;
        for (std::string number; in >> number;) {
            numbers += real ? "+" + number + "0.00e-1 " : "+00" + number + " ";
        }
        return numbers + "and 1 more\n";
    });
    return result;
}

/// A model whose files are rewritten in this way has to convert to the same bytes.
void expectEqual(
    const char* what,
    const std::function<std::string(const std::string&, const std::string&)>& rewrite) {
    for (std::uint32_t seed = 1; seed <= seedNum; ++seed) {
        const Files files = randomModel(seed).files();
        Files other = files;
        for (auto& [name, text] : other) {
            text = rewrite(name, text);
        }
        const Conversion done = convertFiles(files);
        const Conversion again = convertFiles(other);
        ASSERT_EQ(again.report, "") << what << ", seed " << seed << ", " << again.place;
        ASSERT_EQ(again.outputs, done.outputs) << what << ", seed " << seed;
    }
}

TEST(EqualModels, LayoutOfTheTextDoesNotMatter) {
    expectEqual("carriage returns", [](const std::string& name, const std::string& text) {
        return isText(name) ? replaced(text, "\n", "\r\n") : text;
    });
    expectEqual("comments", [](const std::string& name, const std::string& text) {
        return isText(name) ? rewritten(text,
                                        [](const std::string& line) {
                                            return "# 1 2 3 = TYPE\n" + line + "#\n";
                                        })
                            : text;
    });
    expectEqual("empty lines", [](const std::string& name, const std::string& text) {
        return isText(name) && !isToken(name)
                   ? rewritten(text, [](const std::string& line) { return "\n" + line + "\n"; })
                   : text;
    });
    expectEqual("blanks and tabs", [](const std::string& name, const std::string& text) {
        return isText(name)
                   ? rewritten(text,
                               [](const std::string& line) { return replaced(line, " ", " \t "); })
                   : text;
    });
    expectEqual("no last line feed", [](const std::string& name, const std::string& text) {
        return isText(name) ? text.substr(0, text.size() - 1) : text;
    });
    expectEqual("long numbers", [](const std::string& name, const std::string& text) {
        return name.ends_with(".geo") ? longNumbers(text) : text;
    });
}

TEST(EqualModels, MaterialsOfARangeAreThoseOfItsPolygonsOneByOne) {
    expectEqual("ranges", [](const std::string& name, const std::string& text) {
        if (!name.ends_with(".srf")) {
            return text;
        }
        std::size_t number = 0;
        std::string single = rewritten(text, [&](const std::string& line) {
            const std::size_t dash = line.find('-');
            if (dash == std::string::npos) {
                return std::string();  // the number of lines
            }
            std::string result;
            const std::size_t last = std::stoul(line.substr(dash + 1));
            for (std::size_t p = std::stoul(line); p <= last; ++p, ++number) {
                result += std::to_string(p) + line.substr(line.find(' '));
            }
            return result;
        });
        return single.insert(single.find('\n') + 1, std::to_string(number) + "\n");
    });
}

TEST(EqualModels, GroupsAreTheirVertices) {
    std::size_t grouped = 0;
    for (std::uint32_t seed = 1; seed <= seedNum; ++seed) {
        const ModelFiles model = randomModel(seed);
        if (model.sqx.empty()) {
            continue;
        }
        ++grouped;
        std::map<std::string, std::string> vertices;
        std::istringstream groups(lines(model.sqx));
        std::string name;
        std::getline(groups, name);
        for (std::string rest; groups >> name && std::getline(groups, rest);) {
            vertices[name] = rest;
        }
        ModelFiles plain = model;
        plain.sqx.clear();
        plain.frm.clear();
        std::istringstream frm(lines(model.frm));
        std::string line;
        std::getline(frm, line);
        std::getline(frm, line);
        plain.frm = "=NULL;" + line + ";";
        for (int left = std::stoi(line); left > 0; --left) {
            std::getline(frm, line);
            plain.frm += line + ";";
        }
        while (std::getline(frm, line)) {
            std::istringstream assigned(line);
            std::string coordinate, count;
            assigned >> coordinate >> count;
            plain.frm += count == "0" ? coordinate + " 0;" : "";
            while (assigned >> name) {
                plain.frm += coordinate + vertices.at(name) + ";";
            }
        }
        ASSERT_EQ(convertFiles(plain).outputs, convertFiles(model).outputs) << "seed " << seed;
    }
    EXPECT_GT(grouped, 10U);
}

TEST(EqualModels, WithoutImagesTheRestIsTheSame) {
    RunOptions noImages;
    noImages.imageOutput = false;
    for (std::uint32_t seed = 1; seed <= seedNum; ++seed) {
        const ModelFiles model = randomModel(seed);
        const VxbFile whole = readVxb(bytesOf(convertFiles(model).words()));
        const VxbFile without = readVxb(bytesOf(convertFiles(model, noImages).words()));
        EXPECT_FALSE(whole.images.empty());
        EXPECT_TRUE(without.images.empty());
        ASSERT_EQ(without.packetGroups.size(), whole.packetGroups.size()) << "seed " << seed;
        for (std::size_t g = 0; g < whole.packetGroups.size(); ++g) {
            const auto packets = [g](const VxbFile& file) {
                const PacketGroup& group = file.packetGroups[g];
                const auto first = file.words.begin() + group.offset;
                return Words(first, first + group.words);
            };
            ASSERT_EQ(packets(without), packets(whole)) << "seed " << seed;
        }
        const auto words = [](const VxbFile& file, Section section) {
            std::uint32_t number = 0;
            for (const SectionExtent& extent : file.sections()) {
                number += extent.section == section ? extent.words : 0;
            }
            return number;
        };
        for (const Section section : {Section::coordinates, Section::vertices, Section::normals,
                                      Section::packets, Section::animation}) {
            EXPECT_EQ(words(without, section), words(whole, section)) << "seed " << seed;
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
