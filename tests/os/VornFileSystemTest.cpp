#include <vsupt/VornFileSystem.h>

#include <gtest/gtest.h>

#include "OsTesting.h"

#include <sys/stat.h>

#include <cerrno>

using namespace VornSupport;

// Anything existing of the name counts as made.
TEST(VornCreateDirectoryTest, CreatesMissingLevelsLessTheUmaskUntilALevelFails)
{
    ScratchDirectory scratch;
    const mode_t mask = umask(027);
    EXPECT_TRUE(VornCreateDirectory(scratch / "a\\b/c/"));
    umask(mask);
    struct stat status {};
    ASSERT_EQ(0, stat((scratch / "a/b/c").c_str(), &status));
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ(0750u, status.st_mode & 07777);

    writeFile(scratch / "file", "");
    EXPECT_TRUE(VornCreateDirectory(scratch.path()));
    EXPECT_TRUE(VornCreateDirectory(scratch / "file"));
    EXPECT_FALSE(VornCreateDirectory(scratch / "file/x"));
    EXPECT_FALSE(VornCreateDirectory(scratch / "made/" + std::string(300, 'n') + "/x"));
    EXPECT_TRUE(std::filesystem::is_directory(scratch / "made"));
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
    EXPECT_FALSE(VornRemoveDirectoryImpl(tree, true, text, code));
    EXPECT_EQ(ENOENT, code);
}
