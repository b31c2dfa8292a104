#include <vsupt/VornFindFile.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <string>

using namespace VornSupport;

namespace {

std::set<std::string> findAll(const std::string& fileSpec)
{
    std::set<std::string> found;
    VornFindFile find(fileSpec);
    while (find.hasMore()) {
        found.insert(find.next());
    }
    return found;
}

// scratch/a/b holding x1, x2 and y.
class VornFindFileTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(0, mkdir((scratch / "a").c_str(), 0755));
        ASSERT_EQ(0, mkdir(b.c_str(), 0755));
        for (const char* name : {"x1", "x2", "y"}) {
            writeFile(b + "/" + name, name);
        }
    }

    ScratchDirectory scratch;
    const std::string b = scratch / "a/b";
};

// Runs in the directory for the life of the object.
class InDirectory {
public:
    explicit InDirectory(const std::string& path) : m_previous(getcwd(nullptr, 0))
    {
        EXPECT_EQ(0, chdir(path.c_str()));
    }
    ~InDirectory()
    {
        EXPECT_EQ(0, chdir(m_previous));
        free(m_previous);
    }

private:
    char* m_previous;
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
    // A backslash splits as well; the result is joined with "/".
    EXPECT_EQ((std::set<std::string>{b + "/y"}), findAll(b + "\\y"));

    VornFindFile find(b + "/y");
    EXPECT_EQ(b + "/y", find.next());
    EXPECT_FALSE(find.hasMore());
    EXPECT_EQ("", find.next());
    EXPECT_FALSE(find.hasMore());
}

TEST_F(VornFindFileTest, FinalSeparatorListsEveryEntry)
{
    EXPECT_EQ((std::set<std::string>{b + "/.", b + "/..", b + "/x1", b + "/x2", b + "/y"}), findAll(b + "/"));
}

TEST_F(VornFindFileTest, PatternAloneOrAfterALeadingSeparatorSearchesTheCurrentDirectory)
{
    InDirectory here(b);
    EXPECT_EQ((std::set<std::string>{".", "..", "x1", "x2", "y"}), findAll("*"));
    EXPECT_EQ((std::set<std::string>{"x1", "x2"}), findAll("/x*"));
}

TEST_F(VornFindFileTest, UnreadableDirectoryFindsNothingAndSearchesCloseTheirStream)
{
    EXPECT_FALSE(VornFindFile(scratch / "missing/*").hasMore());
    const long before = openDescriptors();
    {
        VornFindFile find(b + "/*");
        EXPECT_TRUE(find.hasMore());
        EXPECT_EQ(before + 1, openDescriptors());
    }
    EXPECT_EQ(before, openDescriptors());
}
