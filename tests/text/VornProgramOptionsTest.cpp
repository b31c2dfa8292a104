#include "support/ThrownText.h"

#include <vsupt/VornException.h>
#include <vsupt/VornProgramOptions.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using VornSupport::VornException;
using VornSupport::VornProgramOptions;

namespace {

using Words = std::vector<std::string>;
using Stored = std::map<std::string, Words>;

// The line behind "prog" in strict mode with the short options "ab:".
VornProgramOptions strict(const std::string& line, const std::string& longOptions = ":help:file.:")
{
    return VornProgramOptions("prog " + line, "ab:", longOptions, false);
}

}  // namespace

TEST(VornProgramOptionsTest, StrictModeStoresDeclaredOptionsByTheirDashForm)
{
    const struct {
        const char* line;
        Stored stored;
        Words positional;
    } cases[] = {
        {"x -a -a -b 1 -b2 y", {{"a", {"", ""}}, {"b", {"1", "2"}}}, {"x", "y"}},
        {"-b=1", {{"b", {"=1"}}}, {}},
        {"-abc", {{"a", {""}}}, {}},
        {"--help=yes", {{"help", {"yes"}}}, {}},
        {"-help=yes", {{"help", {"yes"}}}, {}},
        {"-file out", {{"file", {"out"}}}, {}},
        {"--file out", {}, {"out"}},
        {"--file=out", {}, {}},
        {"-file=x out", {{"file=x", {"out"}}}, {}},
        {"-:", {{":", {""}}}, {}},
    };
    for (const auto& c : cases) {
        const VornProgramOptions options = strict(c.line);
        EXPECT_EQ(options.getOptions().getProperties(), c.stored) << c.line;
        EXPECT_EQ(options.getArguments(), c.positional) << c.line;
    }
}

TEST(VornProgramOptionsTest, StrictModeFailuresNameTheOption)
{
    EXPECT_EQ(thrownTextAndCode([] { strict("-z"); }), "VornProgramOptions::parse: Unrecognized option: -z (0)");
    EXPECT_EQ(thrownTextAndCode([] { strict("--z=1"); }), "VornProgramOptions::parse: Unrecognized option: --z (0)");
    EXPECT_EQ(thrownTextAndCode([] { strict("-"); }), "VornProgramOptions::parse: Unrecognized option: - (0)");
    EXPECT_EQ(thrownTextAndCode([] { strict("--"); }), "VornProgramOptions::parse: Unrecognized option: -- (0)");
    EXPECT_EQ(thrownTextAndCode([] { strict("--", ":a::b:"); }), "nothing thrown");
    EXPECT_EQ(thrownTextAndCode([] { strict("-b"); }), "VornProgramOptions::parse: option data not available for: -b (0)");
    EXPECT_EQ(thrownTextAndCode([] { strict("-file"); }),
              "VornProgramOptions::parse: option data not available for: -file (0)");
}

TEST(VornProgramOptionsTest, ArgumentVectorsAndQuotedLinesGiveTheSameWords)
{
    char prog[] = "prog", file[] = "-file", value[] = "a b", positional[] = "c d", help[] = "--help";
    char* argv[] = {prog, file, value, positional, help, nullptr};
    for (const VornProgramOptions& options :
         {VornProgramOptions(5, argv, "ab:", ":help:file.:", false),
          VornProgramOptions("prog -file 'a b' \"c d\" --help", "ab:", ":help:file.:", false)}) {
        EXPECT_EQ(options.getProgramName(), "prog");
        EXPECT_EQ(options.getOptions().getProperties(), (Stored{{"file", {"a b"}}, {"help", {""}}}));
        EXPECT_EQ(options.getArguments(), Words{"c d"});
    }
    EXPECT_EQ(VornProgramOptions("", false).getProgramName(), "");
}

TEST(VornProgramOptionsTest, FreeModeStoresEveryOptionAsNameAndValue)
{
    const VornProgramOptions options("prog -a=1 --c=3 -d 1 - -- -#x /e=5", false);
    EXPECT_EQ(options.getOptions().getProperties(), (Stored{{"a", {"1"}}, {"c", {"3"}}, {"d", {""}}}));
    EXPECT_EQ(options.getArguments(), (Words{"1", "/e=5"}));
    EXPECT_EQ(VornProgramOptions("prog /a=1 /-b=2", true).getOptions().getProperties(),
              (Stored{{"a", {"1"}}, {"b", {"2"}}}));
}

TEST(VornProgramOptionsTest, ArgumentsAreReadByIndexOrInStepsFromEachCopysStart)
{
    VornProgramOptions original("prog -a=1 x y", false);
    EXPECT_EQ(original.getArgument(1), "y");
    EXPECT_EQ(thrownTextAndCode([&] { original.getArgument(2); }), "VornProgramOptions::getArgument: index out of bounds (0)");
    EXPECT_EQ(original.nextArgument(), "x");
    VornProgramOptions copy(original);
    VornProgramOptions assigned("", false);
    assigned = original;
    for (VornProgramOptions* options : {&copy, &assigned}) {
        EXPECT_EQ(options->getOptions().getProperty("a"), "1");
        EXPECT_EQ(options->nextArgument(), "x");
    }
    EXPECT_EQ(original.nextArgument(), "y");
    EXPECT_FALSE(original.hasNextArgument());
    EXPECT_THROW(original.nextArgument(), VornException);
}

TEST(VornProgramOptionsTest, ParsesAQuarterMegabyteLineInOnePass)
{
    const int count = 256 * 1024 / 3;
    std::string line = "prog";
    for (int i = 0; i < count; ++i) {
        line += " -a";
    }
    const VornProgramOptions options(line, false);
    EXPECT_EQ(options.getOptions().getPropertyValues("a"), Words(count, ""));
}
