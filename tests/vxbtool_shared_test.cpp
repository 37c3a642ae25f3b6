#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/diagnostics.h"
#include "support/test_folder.h"
#include "vxbtool/shared/closest.h"
#include "vxbtool/shared/printable.h"
#include "vxbtool/shared/staged_outputs.h"

namespace vxbtool {
namespace {

TEST(Closest, FindsAWordBehindOneMistakeAndNoStranger) {
    const std::vector<std::string> words{"convert", "--out-dir", "--scale", "completion", "lint"};
    for (const std::string& word : words) {
        const bool longEnough = word.size() >= 3;
        for (std::size_t i = 0; longEnough && i < word.size(); ++i) {
            std::string missing = word, more = word, other = word, exchanged = word, capital = word;
            missing.erase(i, 1);
            more.insert(i, 1, 'z');
            other[i] = 'z';
            std::swap(exchanged[i], exchanged[i > 0 ? i - 1 : 1]);
            capital[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(capital[i])));
            for (const std::string& mistake : {missing, more, other, exchanged, capital}) {
                EXPECT_EQ(closest(mistake, words), word) << mistake;
            }
        }
    }
    // A third of the characters may be wrong, and no more.
    EXPECT_EQ(closest("conzzrt", words), "convert");
    EXPECT_EQ(closest("czzzert", words), "");
    EXPECT_EQ(closest("xx", std::vector<std::string>{"xy"}), "xy");
    EXPECT_EQ(closest("zz", std::vector<std::string>{"xy"}), "");
    EXPECT_EQ(closest("", words), "");
    EXPECT_EQ(closest(std::string(65, 'a'), std::vector<std::string>{std::string(65, 'a')}), "");
    // Of several, the nearest, and of equals the first.
    EXPECT_EQ(closest("scaled", std::vector<std::string>{"sealed", "scale", "scales"}), "sealed");
    EXPECT_EQ(closest("scale", std::vector<std::string>{"scales", "scale"}), "scale");
}

/// Whether a terminal would act on the text: a control character in ASCII or behind it.
bool hasControls(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if ((byte < 0x20 && byte != '\t') || byte == 0x7F ||
            (byte == 0xC2 && next >= 0x80 && next < 0xA0)) {
            return true;
        }
    }
    return false;
}

TEST(Printable, LeavesTextAndTakesControlsWhateverTheBytes) {
    const std::string good = "Größe\t\xE2\x82\xAC \xF0\x9F\x9A\x97 \xC2\xA0 \xDF\xBF ~!";
    EXPECT_EQ(printable(good), good);
    const std::array<std::string, 6> bad{"\x1b[31m",
                                         "\x7f",
                                         "\xC2\x9B"
                                         "31m",
                                         "\x9b"
                                         "31m",
                                         "\r",
                                         "\n"};
    for (const std::string& text : bad) {
        EXPECT_TRUE(printable(text).starts_with('?')) << printable(text);
        EXPECT_EQ(printable(good + text).substr(0, good.size()), good);
    }
    std::mt19937 random(7);
    constexpr std::array<unsigned, 14> bytes{0,    9,    10,   13,   27,   'a',  0x7F,
                                             0x80, 0x9B, 0xA0, 0xC2, 0xE2, 0xF0, 0xFF};
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t i = random() % 8; i > 0; --i) {
            text += static_cast<char>(bytes[random() % bytes.size()]);
        }
        const std::string once = printable(text);
        EXPECT_FALSE(hasControls(once));
        EXPECT_EQ(printable(once), once);
        EXPECT_LE(once.size(), text.size());
        // By lines it is the same, but for the ends of the lines.
        std::string lines;
        std::string rest = text;
        for (std::size_t end = rest.find('\n'); end != std::string::npos; end = rest.find('\n')) {
            const bool carriage = end > 0 && rest[end - 1] == '\r';
            lines += printable(rest.substr(0, end - (carriage ? 1 : 0))) + "\n";
            rest.erase(0, end + 1);
        }
        EXPECT_EQ(printableLines(text), lines + printable(rest));
    }
}

TEST(StagedOutputs, TakesThePlaceOfAFileThatAppearsMeanwhileOnlyWhereItMay) {
    for (const ExistingFiles existing : {ExistingFiles::kept, ExistingFiles::replaced}) {
        const mqf2vxb::tests::TestFolder folder;
        TemporaryFiles temporaryFiles;
        StagedOutputs outputs(temporaryFiles, existing);
        outputs.write((folder.path() / "model").string(), "new");
        outputs.write((folder.path() / "other").string(), "new");
        folder.write("model", "old");
        if (existing == ExistingFiles::kept) {
            EXPECT_THROW(outputs.commit(), mqf2vxb::Report);
            EXPECT_EQ(folder.read("other"), "");
            EXPECT_THROW(outputs.write((folder.path() / "model").string(), "new"), mqf2vxb::Report);
            EXPECT_EQ(folder.read("model"), "old");
            folder.run("ln -s elsewhere link");
            EXPECT_THROW(outputs.write((folder.path() / "link").string(), "new"), mqf2vxb::Report);
            EXPECT_EQ(folder.read("elsewhere"), "");
        } else {
            outputs.commit();
            EXPECT_EQ(folder.read("model"), "new");
        }
    }
}

TEST(StagedOutputs, StayInTheirFolderWhateverItIsCalled) {
    for (const bool committed : {true, false}) {
        const mqf2vxb::tests::TestFolder folder;
        folder.run("mkdir here other");
        TemporaryFiles temporaryFiles;
        {
            StagedOutputs outputs(temporaryFiles);
            outputs.write((folder.path() / "here/model").string(), "new");
            folder.run("mv here there; ln -s other here");
            if (committed) {
                outputs.commit();
            }
        }
        EXPECT_EQ(folder.run("ls -A there other").output,
                  committed ? "other:\n\nthere:\nmodel\n" : "other:\n\nthere:\n");
    }
}

}  // namespace
}  // namespace vxbtool
