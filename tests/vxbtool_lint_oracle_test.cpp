#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/random_model.h"
#include "vxbtool/lint/lint_model.h"

namespace vxbtool {
namespace {

using mqf2vxb::tests::Files;
using mqf2vxb::tests::MemoryFileSystem;
using mqf2vxb::tests::ModelFiles;

/// Lines of the findings of one code, as "file:line".
using Lines = std::set<std::string>;

std::vector<std::string> rowsOf(const std::string& text) {
    std::vector<std::string> rows;
    std::istringstream in(text);
    for (std::string row; std::getline(in, row, ';');) {
        rows.push_back(row);
    }
    return rows;
}

std::vector<std::string> wordsOf(const std::string& row) {
    std::istringstream in(row);
    return {std::istream_iterator<std::string>(in), {}};
}

/// What a model without meshes uses, told from its text alone.
class Uses {
public:
    explicit Uses(const ModelFiles& model) : model_(model) {
        const std::vector<std::string> geo = rowsOf(model.geo);
        std::istringstream counts(geo.front());
        counts >> vertexNum_ >> normalNum_;
        const std::size_t polygons = 1 + vertexNum_ + normalNum_;
        const std::vector<std::string> srf = rowsOf(model.srf);
        for (std::size_t i = 1; i < srf.size(); ++i) {
            const std::vector<std::string> words = wordsOf(srf[i]);
            const std::size_t last = std::stoul(words[0].substr(words[0].find('-') + 1));
            for (std::size_t p = std::stoul(words[0]); p <= last; ++p) {
                draw(words, p, wordsOf(geo[polygons + p]));
            }
        }
        for (std::size_t m = 0; m < model.clp.size(); ++m) {
            look(rowsOf(model.clp[m]), std::to_string(m) + ".clp:");
        }
    }

    /// The lines that lint has to name, by code.
    [[nodiscard]] std::map<std::string, Lines> expected() const {
        std::map<std::string, Lines> lines = lines_;
        const auto geoLine = [](std::size_t record) {
            return "g.geo:" + std::to_string(3 + record);
        };
        for (std::size_t v = 0; v < vertexNum_; ++v) {
            if (!vertices_.contains(v)) {
                lines["L014"].insert(geoLine(v));
            }
        }
        for (std::size_t n = 0; n < normalNum_; ++n) {
            if (!normals_.contains(n)) {
                lines["L015"].insert(geoLine(vertexNum_ + n));
            }
        }
        for (const std::size_t p : repeating_) {
            lines["L016"].insert(geoLine(vertexNum_ + normalNum_ + p));
        }
        const std::string mqf = model_.files().at("m.mqf");
        for (std::size_t i = 0; i < model_.images.size(); ++i) {
            if (!images_.contains(i)) {
                const auto place =
                    static_cast<std::ptrdiff_t>(mqf.find("TEX[" + std::to_string(i) + "]"));
                lines["L029"].insert(
                    "m.mqf:" +
                    std::to_string(1 + std::count(mqf.begin(), mqf.begin() + place, '\n')));
            }
        }
        return lines;
    }

private:
    void draw(const std::vector<std::string>& material, std::size_t number,
              const std::vector<std::string>& polygon) {
        const std::size_t corners = polygon[0] == "0" ? 3 : 4;
        std::set<std::string> own;
        for (std::size_t k = 0; k < corners; ++k) {
            vertices_.insert(std::stoul(polygon[1 + k]));
            own.insert(polygon[1 + k]);
            normals_.insert(std::stoul(polygon[5 + k]));  // drawn with or not
        }
        if (own.size() < corners) {
            repeating_.insert(number);
        }
        if (std::string("TDHWSN").find(material[3]) != std::string::npos) {
            images_.insert(std::stoul(material[4]));
        }
    }

    /// Labels that nothing names, and names that label nothing.
    void look(const std::vector<std::string>& rows, const std::string& file) {
        std::map<std::string, std::size_t> labels;
        std::multimap<std::string, std::size_t> names;
        for (std::size_t i = 2; i < rows.size(); ++i) {
            const std::vector<std::string> words = wordsOf(rows[i]);
            if (words[0] == "TYPE") {
                break;
            }
            if (words.size() == 1) {
                labels[words[0]] = i;
            } else if (words[0] == "GOTO" || words[0] == "START") {
                names.emplace(words[1], i);
            } else if (words[0] == "KEY2") {
                names.emplace(words[1], i);
                names.emplace(words[2], i);
            } else if (words.size() == 3) {
                names.emplace(words[2], i);
            }
        }
        const auto line = [&](std::size_t row) { return file + std::to_string(2 + row); };
        for (const auto& [label, row] : labels) {
            if (!names.contains(label)) {
                lines_["L045"].insert(line(row));
            }
        }
        for (const auto& [name, row] : names) {
            if (!labels.contains(name)) {
                lines_["L044"].insert(line(row));
            }
        }
    }

    const ModelFiles& model_;
    std::size_t vertexNum_ = 0;
    std::size_t normalNum_ = 0;
    std::set<std::size_t> vertices_, normals_, repeating_, images_;
    std::map<std::string, Lines> lines_;
};

TEST(Lint, NamesJustWhatTheTextShows) {
    const std::set<std::string> codes{"L014", "L015", "L016", "L029", "L044", "L045"};
    std::map<std::string, std::size_t> seen;
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        const ModelFiles model = mqf2vxb::tests::randomModel(seed);
        if (!model.bnd.empty()) {
            continue;
        }
        MemoryFileSystem files(model.files());
        std::map<std::string, Lines> actual;
        for (const ReportedFinding& finding : lint::lintModel("m.mqf", 1, files)) {
            if (codes.contains(std::string(finding.code))) {
                actual[std::string(finding.code)].insert(finding.file + ":" +
                                                         std::to_string(finding.line));
            }
        }
        const std::map<std::string, Lines> expected = Uses(model).expected();
        ASSERT_EQ(actual, expected) << "seed " << seed;
        for (const auto& [code, lines] : expected) {
            seen[code] += lines.size();
        }
    }
    for (const std::string& code : codes) {
        EXPECT_GT(seen[code], 20U) << code;
    }
}

TEST(Lint, CarriageReturnsChangeNoFinding) {
    for (std::uint32_t seed = 1; seed <= 150; ++seed) {
        const auto show = [&](const Files& contents) {
            MemoryFileSystem files(contents);
            std::string text;
            for (const ReportedFinding& finding : lint::lintModel("m.mqf", 1, files)) {
                text += finding.file + ":" + std::to_string(finding.line) + ":" +
                        std::to_string(finding.column) + " " + std::string(finding.code) + " " +
                        finding.text + " | " + finding.source + "\n";
            }
            return text;
        };
        const Files plain = mqf2vxb::tests::randomModel(seed).files();
        Files other = plain;
        for (auto& [name, text] : other) {
            for (std::size_t at = 0; !name.ends_with(".pxl") && at < text.size(); ++at) {
                if (text[at] == '\n') {
                    text.insert(at++, 1, '\r');
                }
            }
        }
        ASSERT_EQ(show(other), show(plain)) << "seed " << seed;
    }
}

}  // namespace
}  // namespace vxbtool
