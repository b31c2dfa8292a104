#include <vsupt/VornFileSystem.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <string>

using namespace VornSupport;

namespace {

bool isDirectory(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

mode_t permissionsOf(const std::string& path)
{
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

mode_t currentUmask()
{
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

}  // namespace

TEST(VornCreateDirectoryTest, CreatesMissingLevelsWithTheModeLessTheUmask)
{
    ScratchDirectory scratch;
    EXPECT_TRUE(VornCreateDirectory(scratch / "a\\b/c/"));
    EXPECT_TRUE(isDirectory(scratch / "a/b/c"));
    EXPECT_EQ(0755 & ~currentUmask(), permissionsOf(scratch / "a/b/c"));
}

TEST(VornCreateDirectoryTest, AnythingExistingOfThatNameCounts)
{
    ScratchDirectory scratch;
    writeFile(scratch / "file", "");
    EXPECT_TRUE(VornCreateDirectory(scratch.path()));
    EXPECT_TRUE(VornCreateDirectory(scratch / "file"));
}

TEST(VornCreateDirectoryTest, FailingLevelGivesFalseAndKeepsTheLevelsBeforeIt)
{
    ScratchDirectory scratch;
    writeFile(scratch / "file", "");
    EXPECT_FALSE(VornCreateDirectory(scratch / "file/x"));
    EXPECT_FALSE(VornCreateDirectory(scratch / "made/" + std::string(300, 'n') + "/x"));
    EXPECT_TRUE(isDirectory(scratch / "made"));
    EXPECT_FALSE(VornCreateDirectory(""));
}

TEST(VornRemoveDirectoryTest, NonEmptyDirectoryGoesOnlyRecursively)
{
    ScratchDirectory scratch;
    const std::string tree = scratch / "tree";
    ASSERT_TRUE(VornCreateDirectory(tree + "/inner"));
    writeFile(tree + "/inner/file", "x");

    std::string text;
    int code = -1;
    EXPECT_FALSE(VornRemoveDirectoryImpl(tree, false, text, code));
    EXPECT_EQ(ENOTEMPTY, code);
    EXPECT_EQ("VornRemoveDirectory: Could not remove the directory " + tree, text);

    text.clear();
    EXPECT_TRUE(VornRemoveDirectoryImpl(tree, true, text, code));
    EXPECT_EQ(0, code);
    EXPECT_EQ("", text);
    EXPECT_FALSE(exists(tree));
}

TEST(VornRemoveDirectoryTest, EmptyDirectoryGoesAndAMissingOneIsReported)
{
    ScratchDirectory scratch;
    const std::string empty = scratch / "empty";
    ASSERT_TRUE(VornCreateDirectory(empty));
    std::string text = "kept";
    int code = -1;
    EXPECT_TRUE(VornRemoveDirectoryImpl(empty, false, text, code));
    EXPECT_EQ("kept", text);
    EXPECT_EQ(-1, code);

    EXPECT_FALSE(VornRemoveDirectoryImpl(empty, true, text, code));
    EXPECT_EQ(ENOENT, code);
}

TEST(VornGetEnvironmentVariableTest, UnsetVariableGivesTheEmptyString)
{
    setenv("VSUPT_OS_TEST_VARIABLE", "value", 1);
    EXPECT_EQ("value", VornGetEnvironmentVariable("VSUPT_OS_TEST_VARIABLE"));
    unsetenv("VSUPT_OS_TEST_VARIABLE");
    EXPECT_EQ("", VornGetEnvironmentVariable("VSUPT_OS_TEST_VARIABLE"));
}
