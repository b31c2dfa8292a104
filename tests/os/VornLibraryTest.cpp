#include <vsupt/VornException.h>
#include <vsupt/VornLibrary.h>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace VornSupport;

TEST(VornLibraryTest, LoadsByExactNameAndLooksUpSymbols)
{
    VornLibrary library(VSUPT_LIBRARY_FILE, true);
    EXPECT_EQ(nullptr, library.getProcAddr("vsupt_no_such_symbol"));
    EXPECT_NE(nullptr, library.getProcAddr("g_ModuleData"));
}

TEST(VornLibraryTest, FailedLoadNamesTheGivenNameAndEndsWithTheLoadersText)
{
    try {
        VornLibrary library("vsupt_no_such", false);
        FAIL() << "loaded";
    } catch (VornException& error) {
        EXPECT_EQ("VornLibrary::VornLibrary: failed to load: vsupt_no_such.  "
                  "libvsupt_no_such.so: cannot open shared object file: No such file or directory",
                  error.getText());
        EXPECT_EQ(0, error.getCode());
    }
}

TEST(VornLibraryTest, CopyKeepsTheLibraryLoadedAfterTheOriginalGoes)
{
    const char* zlib = "libz.so.1";
    if (access("/lib/x86_64-linux-gnu/libz.so.1", F_OK) != 0) {
        GTEST_SKIP() << "no " << zlib << " to load";
    }
    auto* original = new VornLibrary(zlib, true);
    VornLibrary copy(*original);
    delete original;
    EXPECT_NE(nullptr, copy.getProcAddr("zlibVersion"));
}
