#include <vsupt/VornLogging.h>
#include <vsupt/VornProperties.h>
#include <vsupt/VornStringUtilities.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using VornSupport::VornBytesToHex;
using VornSupport::VornExpandString;
using VornSupport::VornExtractFirstString;
using VornSupport::VornHexToBytes;
using VornSupport::VornLogging;
using VornSupport::VornParseCommandLine;
using VornSupport::VornProperties;

namespace {

using Words = std::vector<std::string>;

Words commandLineWords(const std::string& line)
{
    Words words;
    VornParseCommandLine(line, words);
    return words;
}

Words tokens(const std::string& text, const std::string& delimiters)
{
    Words items{"stale"};
    VornSupport::VornTokenizer(text, delimiters, items);
    return items;
}

}  // namespace

TEST(VornHexToBytesTest, ConvertsPairsInEitherCaseAndIgnoresAnOddLastDigit)
{
    char bytes[4] = {1, 1, 1, 1};
    EXPECT_EQ(VornHexToBytes(bytes, "0aF"), 1);
    EXPECT_EQ(bytes[0], 0x0A);
    EXPECT_EQ(bytes[1], 1);
    EXPECT_EQ(VornHexToBytes(bytes, "fF00a9"), 3);
    EXPECT_EQ(std::string(bytes, 3), std::string("\xFF\x00\xA9", 3));
    EXPECT_EQ(VornHexToBytes(bytes, "7"), 0);
}

TEST(VornHexToBytesTest, WrongDigitsGiveWrongBytesWithoutFailing)
{
    char bytes[2];
    ASSERT_EQ(VornHexToBytes(bytes, "g\x80"), 1);
    // 'g' - 32 - 55 = 16 shifts out of the byte; 0x80 is -128 as a char,
    // and -128 - 48 = -176 leaves its low byte 0x50.
    EXPECT_EQ(static_cast<unsigned char>(bytes[0]), 0x50);
}

TEST(VornBytesToHexTest, WritesUpperCaseDigitsAndNothingBelowOneByte)
{
    EXPECT_EQ(VornBytesToHex("\x0A\xFF\x00", 3), "0AFF00");
    EXPECT_EQ(VornBytesToHex("x", 0), "");
    EXPECT_EQ(VornBytesToHex("x", -1), "");
}

TEST(VornExpandStringTest, ReplacesNamesFromTheEnvironment)
{
    setenv("VSUPT_TEST_HOME", "/h", 1);
    setenv("VSUPT_TEST_NESTED", "<VSUPT_TEST_HOME>/n", 1);
    EXPECT_EQ(VornExpandString("<VSUPT_TEST_HOME>/x"), "/h/x");
    EXPECT_EQ(VornExpandString("<VSUPT_TEST_NESTED>/<VSUPT_TEST_HOME>"), "/h/n//h");
}

TEST(VornExpandStringTest, UnclosedOrUnknownNamesDoNotFail)
{
    unsetenv("VSUPT_TEST_UNSET");
    EXPECT_EQ(VornExpandString("a<b"), "a<b");
    EXPECT_EQ(VornExpandString("x<VSUPT_TEST_UNSET>y<>z"), "xyz");
    EXPECT_EQ(VornExpandString("<a<b>>"), ">");
}

TEST(VornExpandStringTest, NameInsideANameIsLookedUpWithItsOpeningBracket)
{
    VornProperties<std::string> properties;
    properties.addProperty("a<b", "v");
    EXPECT_EQ(VornExpandString("<a<b>>", properties), "v>");
}

TEST(VornExpandStringTest, PropertiesComeBeforeTheEnvironment)
{
    setenv("VSUPT_TEST_BOTH", "environment", 1);
    setenv("VSUPT_TEST_ONLY_ENV", "env", 1);
    VornProperties<std::string> properties;
    properties.addProperty("VSUPT_TEST_BOTH", "property");
    properties.addProperty("VSUPT_TEST_REF", "<VSUPT_TEST_ONLY_ENV>");
    EXPECT_EQ(VornExpandString("<VSUPT_TEST_BOTH>,<VSUPT_TEST_REF>", properties), "property,env");
}

TEST(VornExpandStringTest, LogsEachStepAtLevelNine)
{
    setenv("VSUPT_TEST_HOME", "/h", 1);
    testing::internal::CaptureStdout();
    {
        VornLogging logger("test", VornLogging::TargetStdout, 9);
        VornLogging::setInstance(logger);
        VornExpandString("<VSUPT_TEST_HOME>");
        VornLogging quiet("test", VornLogging::TargetStdout, -1);
        VornLogging::setInstance(quiet);
    }
    const std::string output = testing::internal::GetCapturedStdout();
    EXPECT_NE(output.find("VornExpandString: expand = <VSUPT_TEST_HOME>\n"), std::string::npos);
    EXPECT_NE(output.find("VornExpandString: Lookup VSUPT_TEST_HOME\n"), std::string::npos);
    EXPECT_NE(output.find("VornExpandString: result = /h\n"), std::string::npos);
}

TEST(VornExtractFirstStringTest, SplitsOffTheFirstWordOrQuotedRun)
{
    std::string rest = "stale";
    EXPECT_EQ(VornExtractFirstString("\"a b\" c", rest), "a b");
    EXPECT_EQ(rest, " c");
    EXPECT_EQ(VornExtractFirstString("\"abc", rest), "abc");
    EXPECT_EQ(rest, "abc");
    EXPECT_EQ(VornExtractFirstString("abc  def", rest), "abc");
    EXPECT_EQ(rest, " def");
    EXPECT_EQ(VornExtractFirstString("abc\tdef", rest), "abc");
    EXPECT_EQ(rest, "def");
    EXPECT_EQ(VornExtractFirstString("abc", rest), "abc");
    EXPECT_EQ(rest, "");
    rest = "stale";
    EXPECT_EQ(VornExtractFirstString("", rest), "");
    EXPECT_EQ(rest, "");
}

TEST(VornTokenizerFunctionTest, BlockOfNulTerminatedItemsEndsAtAnEmptyItem)
{
    char block[] = "ab\0c\0\0d";
    Words items{"stale"};
    VornSupport::VornTokenizer(block, items);
    EXPECT_EQ(items, (Words{"ab", "c"}));
    VornSupport::VornTokenizer(static_cast<char*>(nullptr), items);
    EXPECT_TRUE(items.empty());
}

TEST(VornTokenizerFunctionTest, TextFormGivesOneItemUpToTheFirstNul)
{
    Words items{"stale"};
    VornSupport::VornTokenizer(std::string("a b\0c", 5), items);
    EXPECT_EQ(items, Words{"a b"});
    VornSupport::VornTokenizer(std::string(), items);
    EXPECT_TRUE(items.empty());
}

TEST(VornTokenizerFunctionTest, DelimitersSplitWithRunsCountingAsOne)
{
    EXPECT_EQ(tokens(",,a,;b,,", ",;"), (Words{"a", "b"}));
    EXPECT_EQ(tokens("", ","), Words{});
    EXPECT_EQ(tokens(",,", ","), Words{});
    char text[] = "x y";
    Words items;
    VornSupport::VornTokenizer(text, " ", items);
    EXPECT_EQ(items, (Words{"x", "y"}));
    EXPECT_EQ(std::string(text, 3), std::string("x\0y", 3));
}

TEST(VornParseCommandLineTest, SplitsAtBlanksWithDoubleQuotesProtectingThem)
{
    const struct {
        const char* line;
        Words words;
    } cases[] = {
        {"a  b", {"a", "b"}},
        {" a\tb ", {"a\tb"}},
        {"\"a b\" c", {"a b", "c"}},
        {"a \"b c\" d", {"a", "b c", "d"}},
        {"a\"b c\"d e", {"ab cd", "e"}},
        {"\"ab\"cd e", {"abcd", "e"}},
        {"\"\" x", {"x"}},
        {"\"abc def", {"abc def"}},
        {"\"a\"\"b\"", {"\"b"}},
        {"a\"b c", {"ab c"}},
        {"'a b'", {"'a", "b'"}},
        {"a\"\"", {"a"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(commandLineWords(c.line), c.words) << c.line;
    }
}

TEST(VornParseCommandLineTest, EmptyLineLeavesTheWordsAsTheyWere)
{
    Words words{"kept"};
    VornParseCommandLine("", words);
    EXPECT_EQ(words, Words{"kept"});
    VornParseCommandLine("   ", words);
    EXPECT_TRUE(words.empty());
}
