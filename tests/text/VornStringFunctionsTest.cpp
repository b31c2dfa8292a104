#include <vsupt/VornProperties.h>
#include <vsupt/VornStringUtilities.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace VornSupport;
using Words = std::vector<std::string>;

TEST(VornHexTest, PairsOfDigitsInEitherCaseBecomeBytesAndBack)
{
    char bytes[4] = {1, 1, 1, 1};
    EXPECT_EQ(VornHexToBytes(bytes, "0aF"), 1);
    EXPECT_EQ(std::string(bytes, 2), "\x0A\x01");
    EXPECT_EQ(VornHexToBytes(bytes, "fF00a9"), 3);
    EXPECT_EQ(VornBytesToHex(bytes, 3), "FF00A9");
    // 'g' - 32 - 55 = 16 shifts out of the byte; 0x80 is -128 as a char,
    // and -128 - 48 = -176 leaves its low byte 0x50.
    ASSERT_EQ(VornHexToBytes(bytes, "g\x80"), 1);
    EXPECT_EQ(bytes[0], 0x50);
}

TEST(VornExpandStringTest, NamesExpandFromPropertiesThenTheEnvironmentAgainAndAgain)
{
    setenv("VSUPT_TEST_HOME", "/h", 1);
    setenv("VSUPT_TEST_NESTED", "<VSUPT_TEST_HOME>/n", 1);
    unsetenv("VSUPT_TEST_UNSET");
    EXPECT_EQ(VornExpandString("<VSUPT_TEST_NESTED>/<VSUPT_TEST_HOME>"), "/h/n//h");
    EXPECT_EQ(VornExpandString("a<b"), "a<b");
    EXPECT_EQ(VornExpandString("x<VSUPT_TEST_UNSET>y<>z"), "xyz");

    VornProperties<std::string> properties;
    properties.addProperty("VSUPT_TEST_HOME", "property");
    properties.addProperty("VSUPT_TEST_REF", "<VSUPT_TEST_NESTED>");
    properties.addProperty("a<b", "v");
    EXPECT_EQ(VornExpandString("<VSUPT_TEST_HOME>,<VSUPT_TEST_REF>", properties), "property,property/n");
    EXPECT_EQ(VornExpandString("<a<b>>", properties), "v>");
}

TEST(VornExtractFirstStringTest, SplitsOffTheFirstWordOrQuotedRun)
{
    const struct {
        const char* line;
        const char* first;
        const char* rest;
    } cases[] = {
        {"\"a b\" c", "a b", " c"}, {"\"abc", "abc", "abc"}, {"abc  def", "abc", " def"},
        {"abc\tdef", "abc", "def"}, {"", "", ""},
    };
    for (const auto& c : cases) {
        std::string rest = "stale";
        EXPECT_EQ(VornExtractFirstString(c.line, rest), c.first) << c.line;
        EXPECT_EQ(rest, c.rest) << c.line;
    }
}

TEST(VornTokenizerFunctionTest, SplitsBlocksAtNulsAndTextsAtRunsOfDelimiters)
{
    char block[] = "ab\0c\0\0d";
    Words items{"stale"};
    VornSupport::VornTokenizer(block, items);
    EXPECT_EQ(items, (Words{"ab", "c"}));
    VornSupport::VornTokenizer(std::string(",,a,;b,,"), ",;", items);
    EXPECT_EQ(items, (Words{"a", "b"}));
}

TEST(VornParseCommandLineTest, SplitsAtBlanksWithDoubleQuotesProtectingThem)
{
    const struct {
        const char* line;
        Words words;
    } cases[] = {
        {"a  b", {"a", "b"}},       {" a\tb ", {"a\tb"}},     {"a\"b c\"d e", {"ab cd", "e"}},
        {"\"\" x", {"x"}},          {"\"abc def", {"abc def"}}, {"\"a\"\"b\"", {"\"b"}},
        {"'a b'", {"'a", "b'"}},    {"a\"\"", {"a"}},         {"   ", {}},
    };
    for (const auto& c : cases) {
        Words words{"stale"};
        VornParseCommandLine(c.line, words);
        EXPECT_EQ(words, c.words) << c.line;
    }
    Words words{"kept"};
    VornParseCommandLine("", words);
    EXPECT_EQ(words, Words{"kept"});
}

TEST(VornParseCommandLineTest, SplitsTwoMegabytesOfQuotesInOnePass)
{
    const int count = 150000;
    std::string line;
    for (int i = 0; i < count; ++i) {
        line += "\"x y\"z ";
    }
    line += std::string(line.size(), '"');
    Words words;
    VornParseCommandLine(line, words);
    EXPECT_EQ(words, Words(count, "x yz"));
}
