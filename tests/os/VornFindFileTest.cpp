#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <set>

using namespace VornSupport;

namespace {

std::set<std::string> findAll(const std::string& fileSpec)
{
    std::set<std::string> found;
    for (VornFindFile find(fileSpec); find.hasMore();) {
        found.insert(find.next());
    }
    return found;
}

// scratch/a/b holding x1, x2 and y.
class VornFindFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(b);
        for (const char* name : {"x1", "x2", "y"}) {
            writeFile(b + "/" + name, name);
        }
    }

    ScratchDirectory scratch;
    const std::string b = scratch / "a/b";
};

}  // namespace

TEST(VornFindFilePatternTest, PatternsMatchWholeNamesByteForByte)
{
    for (const char* pattern : {"d*.txt", "*", "????.txt", "data.tx?", "d***a.txt", "*a*a*", "data.txt"}) {
        EXPECT_TRUE(FindFileImplementation::IsPatternMatch(pattern, "data.txt")) << pattern;
    }
    for (const char* pattern : {"data", "DATA.TXT", "*.tx", "?????.txt", "*a*a*a*", ""}) {
        EXPECT_FALSE(FindFileImplementation::IsPatternMatch(pattern, "data.txt")) << pattern;
    }
    EXPECT_TRUE(FindFileImplementation::IsPatternMatch("*", ""));
    EXPECT_FALSE(FindFileImplementation::IsPatternMatch("?", ""));
}

TEST_F(VornFindFileTest, MatchesCarryTheDirectoryPartAndEndEmpty)
{
    EXPECT_EQ((std::set<std::string>{b + "/x1", b + "/x2"}), findAll(b + "/x*"));
    EXPECT_EQ((std::set<std::string>{b + "/.", b + "/..", b + "/x1", b + "/x2", b + "/y"}), findAll(b + "/"));
    // A backslash splits as well; the result is joined with "/".
    VornFindFile find(b + "\\y");
    EXPECT_EQ(b + "/y", find.next());
    EXPECT_FALSE(find.hasMore());
    EXPECT_EQ("", find.next());
    EXPECT_FALSE(find.hasMore());
}

TEST_F(VornFindFileTest, PatternAloneOrAfterALeadingSeparatorSearchesTheCurrentDirectory)
{
    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(b);
    EXPECT_EQ((std::set<std::string>{".", "..", "x1", "x2", "y"}), findAll("*"));
    EXPECT_EQ((std::set<std::string>{"x1", "x2"}), findAll("/x*"));
    std::filesystem::current_path(previous);
}

TEST_F(VornFindFileTest, UnreadableDirectoryFindsNothingAndSearchesCloseTheirStream)
{
    EXPECT_FALSE(VornFindFile(scratch / "missing/*").hasMore());
    const long before = openDescriptors();
    {
        VornFindFile find(b + "/*");
        EXPECT_EQ(before + 1, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());
}
