#include "text/line_reader.h"

#include <gmock/gmock.h>

#include "support/memory_files.h"
#include "text/token_reader.h"

namespace mqf2vxb::tests {
namespace {

using testing::ElementsAre;

/// The data lines behind the ID line of a file with this text.
std::vector<std::string> dataLines(const std::string& text) {
    MemoryFileSystem files({{"f", "@AXS970401\n" + text}});
    Inputs inputs(files);
    LineReader reader(inputs, "f", "@AXS970401");
    std::vector<std::string> found;
    while (reader.readLine()) {
        found.emplace_back(reader.line());
    }
    return found;
}

TEST(LineReader, SkipsEmptyLinesAndCommentsOnly) {
    EXPECT_THAT(dataLines("a\n\n \t\n# c\n \t# c\n  b # d\n\vx\n"),
                ElementsAre("a", "  b # d", "\vx"));
    EXPECT_THAT(dataLines("a\n   "), ElementsAre("a", "   "));  // blanks without a line feed
    EXPECT_THAT(dataLines("a\n#"), ElementsAre("a"));
    EXPECT_THAT(dataLines(""), ElementsAre());
}

TEST(LineReader, DropsACarriageReturnBeforeALineFeedOnly) {
    EXPECT_THAT(dataLines("a\r\n\r\nb\rc\n\r\r\nd\r"), ElementsAre("a", "b\rc", "\r", "d\r"));
}

TEST(LineReader, EndsALineAtANul) {
    using std::string_literals::operator""s;
    EXPECT_THAT(dataLines("a\0b\nc\n"s), ElementsAre("a", "c"));
}

TEST(LineReader, SplitsLinesBehind255Characters) {
    const std::string a254(254, 'a');
    const std::string a255(255, 'a');
    EXPECT_THAT(dataLines(a254 + "\nb\n"), ElementsAre(a254, "b"));
    EXPECT_THAT(dataLines(a255 + "\nb\n"), ElementsAre(a255, "b"));
    EXPECT_THAT(dataLines(a255 + "\r\n\nb"), ElementsAre(a255, "b"));
    EXPECT_THAT(dataLines(a255 + "#c\nb\n"), ElementsAre(a255, "b"));
    EXPECT_THAT(dataLines(a255 + a255 + "c\nb"), ElementsAre(a255, a255, "c", "b"));
    EXPECT_THAT(dataLines(a254 + "\r\nb\r\n"), ElementsAre(a254, "b"));
    EXPECT_THAT(dataLines("#" + a255 + "c"), ElementsAre("ac"));
}

/// What the ID check says to this text; `before` is read first.
std::string idReport(const std::string& text, const std::string& before = {}) {
    MemoryFileSystem files({{"f", text}, {"before", before}});
    Inputs inputs(files);
    try {
        if (!before.empty()) {
            const LineReader reader(inputs, "before", "@AXS970401");
        }
        const LineReader reader(inputs, "f", "@GEO970401");
    } catch (const Report& report) {
        return report.text();
    }
    return {};
}

TEST(LineReader, ChecksTheIdLine) {
    for (const char* const good : {"@GEO970401", "@GEO970401\n", "@GEO970401 and words\n",
                                   "@GEO970401x", "\n # c\n@GEO970401\r\n"}) {
        EXPECT_EQ(idReport(good), "") << good;
    }
    const std::string tag = "\nFormat isn't correct!\n\nFile Name:f\nID       :";
    EXPECT_EQ(idReport("@SRF970401 x\n1\n"), tag + "@SRF970401 x\n");
    EXPECT_EQ(idReport(" @GEO970401\n"), tag + " @GEO970401\n");
    EXPECT_EQ(idReport("@geo970401"), tag + "@geo970401");
    EXPECT_EQ(idReport("#@GEO970401\nGEO\n"), tag + "GEO\n");
    EXPECT_EQ(idReport("@GE"), tag + "@GE");
    const std::string date =
        "\nThis program doesn't support the version!\n\nFile Name:f\nID       :";
    EXPECT_EQ(idReport("@GEO970402\n"), date + "@GEO970402\n");
    EXPECT_EQ(idReport("@GEO970301\n"), date + "@GEO970301\n");
    EXPECT_EQ(idReport("@GEO"), date + "@GEO");
}

TEST(LineReader, ChecksTheIdOnWhatTheLineBufferHolds) {
    const std::string tag = "\nFormat isn't correct!\n\nFile Name:f\nID       :";
    EXPECT_EQ(idReport(""), tag);
    EXPECT_EQ(idReport("", "@AXS970401 first\n"), tag + "@AXS970401 first\n");
    EXPECT_EQ(idReport("# only\n# comments\n", "@AXS970401\n"), tag + "# comments\n");
}

/// Reads the characters behind the ID line of a file with this text.
class Tokens {
public:
    explicit Tokens(const std::string& text)
        : files_({{"f", "@FRM970401\n" + text}}),
          inputs_(files_),
          lines_(inputs_, "f", "@FRM970401") {}
    TokenReader& operator*() { return tokens_; }
    TokenReader* operator->() { return &tokens_; }

private:
    MemoryFileSystem files_;
    Inputs inputs_;
    LineReader lines_;
    TokenReader tokens_{lines_};
};

TEST(TokenReader, DropsCommentsWithTheirLineFeed) {
    Tokens tokens("a#b\n#c\r\n#\nd\r\ne\r#=\n=f");
    std::string characters;
    for (int c = tokens->readChar(); c != TokenReader::endOfFile; c = tokens->readChar()) {
        characters.push_back(static_cast<char>(c));
    }
    EXPECT_EQ(characters, "ad\ne\r=f");
}

TEST(TokenReader, ReadsWordsAndItems) {
    Tokens words(" \t\n a,b\tc#d\ne f \n\n");
    EXPECT_EQ(words->word(), "a,b");
    EXPECT_EQ(words->word(), "ce");  // the comment takes the line feed along
    EXPECT_EQ(words->checkedWord(), "f");
    EXPECT_EQ(words->checkedWord(), std::nullopt);
    EXPECT_EQ(Tokens("cut")->checkedWord(), std::nullopt);

    Tokens items(",, a,b c\n,d");
    for (const char* const item : {"a", "b", "c", "d"}) {
        EXPECT_EQ(items->item(), item);
    }
    Tokens rest("x=name of file\n 12 # 3\n4\n5");
    rest->skipPast('=');
    EXPECT_EQ(rest->restOfLine(), "name of file");
    EXPECT_EQ(rest->restOfLine(), " 12 4");
    EXPECT_EQ(rest->restOfLine(), "5");
}

TEST(TokenReader, ReadsRanges) {
    Tokens tokens("3-5,7, 9- \n11 2,\n0-0");
    for (const auto& [first, last] :
         {std::pair{3, 5}, std::pair{7, 7}, std::pair{9, 11}, std::pair{2, 2}, std::pair{0, 0}}) {
        const IndexRange range = tokens->rangeItem();
        EXPECT_EQ(range.first, first);
        EXPECT_EQ(range.last, last);
    }
}

TEST(TokenReader, TakesNumbersFromTheStartOfAText) {
    Tokens tokens("12abc -3 +4 x 70000");
    EXPECT_EQ(tokens->wordNumber(), 12);
    EXPECT_EQ(tokens->wordNumber(), -3);
    EXPECT_EQ(tokens->wordNumber(), 4);
    EXPECT_EQ(tokens->wordNumber(), 0);
    EXPECT_EQ(tokens->wordNumber16(), 70000 - 65536);
}

}  // namespace
}  // namespace mqf2vxb::tests
