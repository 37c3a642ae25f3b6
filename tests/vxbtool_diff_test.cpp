#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/memory_files.h"
#include "support/random_model.h"
#include "vxb/packet_decoder.h"
#include "vxb/vxb_reader.h"
#include "vxbtool/diff/changes.h"
#include "vxbtool/diff/compare.h"
#include "vxbtool/shared/motion_steps.h"

namespace vxbtool::diff {
namespace {

using mqf2vxb::Field;
using mqf2vxb::VxbFile;
using namespace mqf2vxb::tests;

/// What is told between two files, and of how many things.
using Told = std::map<std::string, std::size_t>;

Told told(const VxbFile& before, const VxbFile& after) {
    Changes changes(true);
    compareCoordinates(before, after, changes);
    comparePolygons(before, after, changes);
    compareMotions(before, after, changes);
    compareImages(before, after, changes);
    Told result;
    for (const Change& change : changes.kept()) {
        result[std::string(nameOf(change.kind))] += change.count;
        EXPECT_EQ(change.text.find('\n'), std::string::npos);
    }
    return result;
}

VxbFile fileOf(const Words& words) { return mqf2vxb::readVxb(bytesOf(words)); }

/// One word of a file to be changed, and what diff has to tell of that.
struct Edit {
    std::uint32_t offset;
    std::uint32_t flipped;  ///< bits
    std::string kind;
};

/// One edit of each sort that the file has a place for.
std::vector<Edit> editsOf(const VxbFile& file) {
    constexpr std::uint32_t matrixWord = 1;
    constexpr std::uint32_t translationWord = 6;
    constexpr std::uint32_t extraWord = 17;
    std::vector<Edit> edits;
    if (!file.coordinates.empty()) {
        const std::uint32_t top = file.coordinates.back().offset;
        edits.push_back({top + matrixWord, 2, "coordinate-matrix"});
        edits.push_back({top + translationWord + 1, 8, "coordinate-translation"});
        edits.push_back({top + extraWord, 1, "coordinate-angles"});
    }
    std::set<Field> fields;
    for (const mqf2vxb::PacketGroup& group : file.packetGroups) {
        mqf2vxb::forEachPolygon(file, group, [&](const mqf2vxb::PacketPolygon& polygon) {
            mqf2vxb::forEachField(
                file, polygon, [&](Field field, std::uint32_t offset, std::uint32_t value) {
                    if (group.form->strip() || !fields.insert(field).second) {
                        return;
                    }
                    if (field == Field::C0) {
                        edits.push_back({offset, 2, "polygon-colours"});
                    } else if (field == Field::T1) {
                        edits.push_back({offset, 2, "polygon-texels"});
                    } else if (field == Field::V0) {
                        const mqf2vxb::PointBlock& block =
                            group.shared ? file.vertices.shared : file.vertices.independent;
                        edits.push_back({block.offset + 2 * value, 4, "vertex-moved"});
                    }
                });
        });
    }
    std::uint32_t named = file.animation.controlNum;
    for (const StepRange& range : stepsOfMotions(file.animation)) {
        named = std::min(named, range.first);
    }
    for (std::uint32_t s = 0; s < file.animation.controlNum; ++s) {
        const std::uint32_t offset = file.animation.controlOffset + s;
        const auto kind = mqf2vxb::controlWord(file.words[offset]).kind;
        if (kind == mqf2vxb::ControlKind::keyFrame) {
            edits.push_back({offset, 1U << 16U, s < named ? "words" : "step-frames"});
        } else if (kind == mqf2vxb::ControlKind::end) {
            edits.push_back({offset, 1U << 16U, s < named ? "words" : "step-other"});
        }
    }
    if (!file.images.empty()) {
        const mqf2vxb::Image& image = file.images.front();
        edits.push_back({image.pixels.offset, 1, "image-texels"});
        if (image.clut) {
            edits.push_back({image.clut->offset, 1, "image-colours"});
        }
    }
    return edits;
}

TEST(Diff, TellsOneChangedWordAsThat) {
    std::map<std::string, std::size_t> tried;
    for (std::uint32_t seed = 1; seed <= 120; ++seed) {
        const Words words = convertFiles(randomModel(seed)).words();
        const VxbFile file = fileOf(words);
        EXPECT_EQ(told(file, file), Told{}) << "seed " << seed;
        for (const Edit& edit : editsOf(file)) {
            Words changed = words;
            changed[edit.offset] ^= edit.flipped;
            const VxbFile other = fileOf(changed);
            if (other.findings.count(mqf2vxb::Severity::error) > 0) {
                continue;  // a word that has to agree with others
            }
            Told expected{{edit.kind, 1}};
            if (edit.kind == "vertex-moved") {  // each owner of polygons that use it counts it
                const Told what = told(file, other);
                EXPECT_TRUE(what.contains(edit.kind)) << "seed " << seed;
                expected = {what.begin(), what.end()};
            }
            EXPECT_EQ(told(file, other), expected) << "seed " << seed << ", word " << edit.offset;
            EXPECT_EQ(told(other, file), expected) << "seed " << seed << ", word " << edit.offset;
            ++tried[edit.kind];
        }
    }
    EXPECT_EQ(tried.size(), 11U);
}

/// A model of quadrangles in rows, and what an edit makes of it.
class Grid {
public:
    static constexpr std::uint32_t side = 12;

    Grid() {
        for (std::uint32_t p = 0; p < side * side; ++p) {
            colours.push_back(p % 7);
            order.push_back(p);
        }
        for (std::uint32_t v = 0; v < (side + 1) * (side + 1); ++v) {
            heights.push_back(v * v % 90);
        }
    }

    [[nodiscard]] VxbFile file() const {
        ModelFiles model;
        model.geo = std::to_string(heights.size()) + " 1 " + std::to_string(side * side) + ";";
        for (std::uint32_t v = 0; v < heights.size(); ++v) {
            model.geo += std::to_string(100 * (v % (side + 1))) + " " + std::to_string(heights[v]) +
                         " " + std::to_string(100 * (v / (side + 1))) + ";";
        }
        model.geo += "0 1 0;";
        for (std::uint32_t p = 0; p < side * side; ++p) {
            const std::uint32_t corner = p + p / side;
            model.geo += "1";
            for (const std::uint32_t v :
                 {corner, corner + 1, corner + side + 1, corner + side + 2}) {
                model.geo += " " + std::to_string(v);
            }
            model.geo += " 0 0 0 0;";
        }
        model.srf = std::to_string(order.size()) + ";";
        for (const std::uint32_t p : order) {
            model.srf += std::to_string(p) + " 0 F C " + std::to_string(30 * colours[p]) + " 9 9;";
        }
        return fileOf(convertFiles(model).words());
    }

    std::vector<std::uint32_t> colours;  ///< of polygons
    std::vector<std::uint32_t> heights;  ///< of vertices
    std::vector<std::uint32_t> order;    ///< polygons as they are drawn
};

/// Edits of several sorts at once, in a model whose polygons change their order besides.
TEST(Diff, TellsExactlyTheEditsWhateverTheOrder) {
    const VxbFile before = Grid().file();
    std::mt19937 random(5);
    for (int i = 0; i < 60; ++i) {
        Grid grid;
        // What is edited lies apart, so that no polygon has two edits.
        std::vector<std::uint32_t> places;
        for (std::uint32_t row = 1; row < Grid::side; row += 3) {
            for (std::uint32_t column = 1; column < Grid::side; column += 3) {
                places.push_back(row * Grid::side + column);
            }
        }
        std::shuffle(places.begin(), places.end(), random);
        const std::size_t removed = random() % 4;
        const std::size_t recoloured = random() % 4;
        const std::size_t moved = random() % 4;
        for (std::size_t k = 0; k < removed + recoloured + moved; ++k) {
            const std::uint32_t p = places[k];
            if (k < removed) {
                std::erase(grid.order, p);
            } else if (k < removed + recoloured) {
                grid.colours[p] += 10;
                grid.colours[p] %= 8;
            } else {
                grid.heights[p + p / Grid::side] += 200;
            }
        }
        std::shuffle(grid.order.begin(), grid.order.end(), random);
        const VxbFile after = grid.file();
        Told expected;
        const auto expect = [&](const char* kind, std::size_t number) {
            if (number > 0) {
                expected[kind] = number;
            }
        };
        expect("polygon-colours", recoloured);
        expect("vertex-moved", moved);
        Told back = expected;
        expect("polygon-removed", removed);
        EXPECT_EQ(told(before, after), expected) << i;
        std::swap(expected, back);
        expect("polygon-added", removed);
        EXPECT_EQ(told(after, before), expected) << i;
    }
}

}  // namespace
}  // namespace vxbtool::diff
