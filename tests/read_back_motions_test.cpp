#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "support/random_model.h"
#include "support/told_lines.h"
#include "vxb/vxb_reader.h"

namespace mqf2vxb::tests {
namespace {

/// The motions of a model as their text says, with the numbers that the file gives to their parts.
class ToldMotions {
public:
    explicit ToldMotions(const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
            firstStep_ = controls.size();
            labels_.clear();
            std::vector<std::string> motion = linesOf(text);
            readSteps(motion);
            readKeyFrames(motion);
            readIndex(motion);
        }
    }

    struct Control {
        std::uint32_t fields;  ///< all but what a step leads to
        std::string target;    ///< label of a jump
        std::string code;      ///< of a key frame
        std::size_t keyFrame;  ///< its number among those of its code
        std::size_t motion;
        std::uint32_t step = 0;  ///< where a jump leads
    };
    std::vector<Control> controls;
    std::vector<std::string> types;            ///< without the bare type
    std::map<std::string, Numbers> keyFrames;  ///< by motion, code and number
    std::vector<Numbers> index;                ///< coordinate, first step, sequence headers

    static std::string key(std::size_t motion, const std::string& code, std::size_t number) {
        return std::to_string(motion) + code + " " + std::to_string(number);
    }

private:
    std::uint32_t step(const std::string& label, std::uint32_t otherwise) const {
        const auto found = labels_.find(label);
        return found != labels_.end() ? static_cast<std::uint32_t>(found->second) : otherwise;
    }

    void readSteps(const std::vector<std::string>& motion) {
        for (const std::string& line : motion) {
            std::istringstream in(line);
            std::string word, first, second;
            in >> word >> first >> second;
            if (word == "SEQ") {
                const auto number = static_cast<std::uint32_t>(std::stoul(first));
                controls.push_back({number << 16U, "", second, 0, motions_});
                in >> controls.back().keyFrame;
            } else if (word == "GOTO") {
                std::string third;
                in >> third;
                controls.push_back(
                    {0x80000000U | hex(second) << 23U | hex(third) << 16U, first, "", 0, motions_});
            } else if (word == "END") {
                controls.push_back({0xC0800000U | hex(first) << 16U, "", "", 0, motions_});
            } else if (word.starts_with('l')) {
                labels_[word] = controls.size();
            }
        }
        for (std::size_t i = firstStep_; i < controls.size(); ++i) {
            controls[i].step = step(controls[i].target, 0);
        }
    }

    void readKeyFrames(const std::vector<std::string>& motion) {
        std::size_t number = 0;
        std::string code;
        for (const std::string& line : motion) {
            if (line.starts_with("TYPE ")) {
                code = line.substr(5);
                number = 0;
                if (code != "ps0r0t0" &&
                    std::find(types.begin(), types.end(), code) == types.end()) {
                    types.push_back(code);
                }
            } else if (!code.empty()) {
                keyFrames[key(motions_, code, number++)] = numbersOf(line);
            }
        }
        ++motions_;
    }

    void readIndex(const std::vector<std::string>& motion) {
        std::size_t line = 2;
        for (int left = std::stoi(motion.at(1)); left > 0; --left) {
            std::istringstream in(motion.at(line++));
            std::int64_t coordinate = 0;
            int headers = 0;
            std::string label;
            in >> coordinate >> headers >> label;
            Numbers& entry = index.emplace_back(Numbers{coordinate, step(label, 65535)});
            for (; headers > 0; --headers) {
                std::istringstream header(motion.at(line++));
                std::string word, first, second;
                header >> word >> first >> second;
                entry.push_back(word == "START" ? step(first, 0) | hex(second) << 16U
                                                : step(first, 0) | step(second, 0) << 16U);
            }
        }
    }

    static std::uint32_t hex(const std::string& text) {
        return static_cast<std::uint32_t>(std::stoul(text, nullptr, 16));
    }

    std::size_t firstStep_ = 0;
    std::size_t motions_ = 0;
    std::map<std::string, std::size_t> labels_;
};

/// The words of a key frame with these values: its code says which of them have 32 bits.
Words keyFrameWords(const std::string& code, const Numbers& values) {
    const char scale = code.at(2), rotation = code.at(4), translation = code.at(6);
    const std::size_t wide = translation == '1' ? 3 : 0;
    const std::size_t bare = code == "ps0r0t0" ? 2 : 0;
    const std::size_t halves = bare + (translation == '9' ? 3 : 0) + (rotation == '1' ? 3 : 0) +
                               (scale == '1'   ? 3
                                : scale == '9' ? 1
                                               : 0);
    Words words;
    for (std::size_t i = 0; i < wide; ++i) {
        words.push_back(static_cast<std::uint32_t>(values.at(i)));
    }
    for (std::size_t i = 0; i < halves; ++i) {
        const auto half = static_cast<std::uint32_t>(values.at(wide + i)) & 0xFFFFU;
        if (i % 2 == 0) {
            words.push_back(half);
        } else {
            words.back() |= half << 16U;
        }
    }
    return words;
}

TEST(ReadBack, EveryStepLeadsWhereTheTextSays) {
    for (std::uint32_t seed = 1; seed <= 200; ++seed) {
        const ModelFiles model = randomModel(seed);
        const ToldMotions told(model.clp);
        const VxbFile file = readVxb(bytesOf(convertFiles(model).words()));
        const Animation& animation = file.animation;
        ASSERT_EQ(animation.controlNum, told.controls.size()) << "seed " << seed;
        EXPECT_EQ(animation.types.size(), told.types.size()) << "seed " << seed;
        for (std::size_t i = 0; i < told.controls.size(); ++i) {
            const ToldMotions::Control& control = told.controls[i];
            const std::uint32_t word = file.words.at(animation.controlOffset + i);
            if (control.code.empty()) {
                EXPECT_EQ(word, control.fields | control.step) << "seed " << seed << ", step " << i;
                continue;
            }
            const auto type = std::find(told.types.begin(), told.types.end(), control.code);
            const auto typeIndex = type != told.types.end() ? type - told.types.begin() : 0;
            EXPECT_EQ(word >> 16U, control.fields >> 16U | static_cast<std::uint32_t>(typeIndex)
                                                               << 8U)
                << "seed " << seed << ", step " << i;
            const Words expected =
                keyFrameWords(control.code, told.keyFrames.at(ToldMotions::key(
                                                control.motion, control.code, control.keyFrame)));
            const auto start = file.words.begin() + animation.keyFrameOffset + (word & 0xFFFFU);
            ASSERT_LE(start + static_cast<std::ptrdiff_t>(expected.size()), file.words.end());
            EXPECT_EQ(Words(start, start + static_cast<std::ptrdiff_t>(expected.size())), expected)
                << "seed " << seed << ", step " << i << ", " << control.code;
        }
        ASSERT_EQ(animation.coordinates.size(), told.index.size()) << "seed " << seed;
        for (std::size_t i = 0; i < told.index.size(); ++i) {
            const AnimatedCoordinate& entry = animation.coordinates[i];
            Numbers found{entry.coordinate, entry.startStep};
            for (std::uint32_t h = 0; h < entry.sequenceNum; ++h) {
                found.push_back(file.words.at(entry.offset + 6 + h));
            }
            EXPECT_EQ(found, told.index[i]) << "seed " << seed << ", entry " << i;
        }
    }
}

}  // namespace
}  // namespace mqf2vxb::tests
