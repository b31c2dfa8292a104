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

const char* const shortSpec = "ab:";
const char* const longSpec = ":help:file.:";

// An argument vector whose program name is "prog".
class Arguments {
public:
    explicit Arguments(const Words& words) : m_words(words)
    {
        m_words.insert(m_words.begin(), "prog");
        for (std::string& word : m_words) {
            m_pointers.push_back(word.data());
        }
        m_pointers.push_back(nullptr);
    }
    int argc() const { return static_cast<int>(m_words.size()); }
    char** argv() { return m_pointers.data(); }

private:
    Words m_words;
    std::vector<char*> m_pointers;
};

VornProgramOptions strictMode(const Words& words, const std::string& shortOptions = shortSpec,
                          const std::string& longOptions = longSpec)
{
    Arguments arguments(words);
    return VornProgramOptions(arguments.argc(), arguments.argv(), shortOptions, longOptions, false);
}

VornProgramOptions freeMode(const Words& words, bool slashOptions = false)
{
    Arguments arguments(words);
    return VornProgramOptions(arguments.argc(), arguments.argv(), slashOptions);
}

std::string failureOf(const Words& words, const std::string& longOptions = longSpec)
{
    try {
        strictMode(words, shortSpec, longOptions);
    } catch (const VornException& error) {
        EXPECT_EQ(error.getCode(), 0);
        return error.getText();
    }
    return "no exception";
}

}  // namespace

TEST(VornProgramOptionsTest, StrictModeStoresDeclaredOptionsByTheirDashForm)
{
    const struct {
        Words arguments;
        Stored stored;
        Words positional;
    } cases[] = {
        {{"-a", "x"}, {{"a", {""}}}, {"x"}},
        {{"-b", "1"}, {{"b", {"1"}}}, {}},
        {{"-b1"}, {{"b", {"1"}}}, {}},
        {{"-b=1"}, {{"b", {"=1"}}}, {}},
        {{"-abc"}, {{"a", {""}}}, {}},
        {{"-help"}, {{"help", {""}}}, {}},
        {{"--help"}, {{"help", {""}}}, {}},
        {{"--help=yes"}, {{"help", {"yes"}}}, {}},
        {{"-help=yes"}, {{"help", {"yes"}}}, {}},
        {{"-file", "out"}, {{"file", {"out"}}}, {}},
        {{"--file", "out"}, {}, {"out"}},
        {{"--file=out"}, {}, {}},
        {{"-file=x", "out"}, {{"file=x", {"out"}}}, {}},
        {{"x", "-a", "y"}, {{"a", {""}}}, {"x", "y"}},
        {{"-:"}, {{":", {""}}}, {}},
        {{"-a", "-a", "-b", "1", "-b2"}, {{"a", {"", ""}}, {"b", {"1", "2"}}}, {}},
        {{"/a", ""}, {}, {"/a", ""}},
    };
    for (const auto& c : cases) {
        const VornProgramOptions options = strictMode(c.arguments);
        EXPECT_EQ(options.getOptions().getProperties(), c.stored) << c.arguments.front();
        EXPECT_EQ(options.getArguments(), c.positional) << c.arguments.front();
        EXPECT_EQ(options.getProgramName(), "prog");
    }
}

TEST(VornProgramOptionsTest, StrictModeFailuresNameTheOption)
{
    EXPECT_EQ(failureOf({"-z"}), "VornProgramOptions::parse: Unrecognized option: -z");
    EXPECT_EQ(failureOf({"--z"}), "VornProgramOptions::parse: Unrecognized option: --z");
    EXPECT_EQ(failureOf({"--z=1"}), "VornProgramOptions::parse: Unrecognized option: --z");
    EXPECT_EQ(failureOf({"-b"}), "VornProgramOptions::parse: option data not available for: -b");
    EXPECT_EQ(failureOf({"-file"}), "VornProgramOptions::parse: option data not available for: -file");
    EXPECT_EQ(failureOf({"-"}), "VornProgramOptions::parse: Unrecognized option: -");
    EXPECT_EQ(failureOf({"--"}), "VornProgramOptions::parse: Unrecognized option: --");
    EXPECT_EQ(failureOf({"--"}, ":a::b:"), "no exception");
}

TEST(VornProgramOptionsTest, FreeModeStoresEveryOptionAsNameAndValue)
{
    const VornProgramOptions options = freeMode({"-a=1", "--c=3", "-d", "1", "-", "--", "-#x", "/e=5"});
    const Stored expected = {{"a", {"1"}}, {"c", {"3"}}, {"d", {""}}};
    EXPECT_EQ(options.getOptions().getProperties(), expected);
    EXPECT_EQ(options.getArguments(), (Words{"1", "/e=5"}));

    EXPECT_EQ(freeMode({"/a=1", "/-b=2"}, true).getOptions().getProperties(), (Stored{{"a", {"1"}}, {"b", {"2"}}}));
}

TEST(VornProgramOptionsTest, CommandLineStringIsSplitWithQuotesIntoWords)
{
    const VornProgramOptions options("prog -file 'a b' \"c d\" --help", shortSpec, longSpec, false);
    EXPECT_EQ(options.getProgramName(), "prog");
    EXPECT_EQ(options.getOptions().getProperties(), (Stored{{"file", {"a b"}}, {"help", {""}}}));
    EXPECT_EQ(options.getArguments(), Words{"c d"});

    const VornProgramOptions empty("", false);
    EXPECT_EQ(empty.getProgramName(), "");
    EXPECT_EQ(empty.getOptions().size(), 0u);
    EXPECT_EQ(empty.getArgumentCount(), 0u);

    EXPECT_THROW(VornProgramOptions("prog -z", shortSpec, longSpec, false), VornException);
}

TEST(VornProgramOptionsTest, ArgumentsAreReadByIndexOrInStepsFromEachCopysStart)
{
    VornProgramOptions original = freeMode({"-a=1", "x", "y"});
    EXPECT_EQ(original.getArgument(1), "y");
    try {
        original.getArgument(2);
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "VornProgramOptions::getArgument: index out of bounds");
    }
    EXPECT_EQ(original.nextArgument(), "x");
    VornProgramOptions copy(original);
    VornProgramOptions assigned = freeMode({});
    assigned = original;
    for (VornProgramOptions* options : {&copy, &assigned}) {
        EXPECT_EQ(options->getOptions().getProperty("a"), "1");
        EXPECT_EQ(options->nextArgument(), "x");
    }
    EXPECT_EQ(original.nextArgument(), "y");
    EXPECT_FALSE(original.hasNextArgument());
    EXPECT_THROW(original.nextArgument(), VornException);
}
