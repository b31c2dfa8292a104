#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <set>

using namespace VornSupport;
using Names = std::set<std::string>;

namespace {

Names findAll(const std::string& fileSpec)
{
    Names found;
    for (VornFindFile find(fileSpec); find.hasMore();) {
        found.insert(find.next());
    }
    return found;
}

}  // namespace

TEST(VornFindFileTest, PatternsMatchWholeNamesByteForByte)
{
    for (const char* pattern : {"d*.txt", "????.txt", "data.tx?", "d***a.txt", "*a*a*"}) {
        EXPECT_TRUE(FindFileImplementation::IsPatternMatch(pattern, "data.txt")) << pattern;
    }
    for (const char* pattern : {"data", "DATA.TXT", "*.tx", "?????.txt", "*a*a*a*", ""}) {
        EXPECT_FALSE(FindFileImplementation::IsPatternMatch(pattern, "data.txt")) << pattern;
    }
    EXPECT_TRUE(FindFileImplementation::IsPatternMatch("*", ""));
    EXPECT_FALSE(FindFileImplementation::IsPatternMatch("?", ""));
}

// A pattern alone, or after a leading separator, searches the current
// directory; either separator splits, and matches are joined with "/".
TEST(VornFindFileTest, MatchesCarryTheDirectoryPartAndEndEmpty)
{
    ScratchDirectory scratch;
    const std::string b = scratch / "a/b";
    std::filesystem::create_directories(b);
    for (const char* name : {"x1", "x2", "y"}) {
        writeFile(b + "/" + name, name);
    }
    EXPECT_EQ((Names{b + "/x1", b + "/x2"}), findAll(b + "/x*"));
    EXPECT_EQ((Names{b + "/.", b + "/..", b + "/x1", b + "/x2", b + "/y"}), findAll(b + "/"));
    VornFindFile find(b + "\\y");
    EXPECT_EQ(b + "/y", find.next());
    EXPECT_FALSE(find.hasMore());
    EXPECT_EQ("", find.next());

    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(b);
    EXPECT_EQ((Names{".", "..", "x1", "x2", "y"}), findAll("*"));
    EXPECT_EQ((Names{"x1", "x2"}), findAll("/x*"));
    std::filesystem::current_path(previous);
}

TEST(VornFindFileTest, UnreadableDirectoryFindsNothingAndSearchesCloseTheirStream)
{
    ScratchDirectory scratch;
    EXPECT_FALSE(VornFindFile(scratch / "missing/*").hasMore());
    const long before = openDescriptors();
    {
        VornFindFile find(scratch.path() + "/*");
        EXPECT_EQ(before + 1, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());
}
