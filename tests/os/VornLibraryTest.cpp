#include <vsupt/VornException.h>
#include <vsupt/VornLibrary.h>

#include <gtest/gtest.h>

#include <filesystem>

using namespace VornSupport;

TEST(VornLibraryTest, FailedLoadNamesTheGivenNameAndEndsWithTheLoadersText)
{
    try {
        VornLibrary library("vsupt_no_such", false);
        FAIL() << "loaded";
    } catch (VornException& error) {
        EXPECT_EQ("VornLibrary::VornLibrary: failed to load: vsupt_no_such.  "
                  "libvsupt_no_such.so: cannot open shared object file: No such file or directory",
                  error.getText());
    }
}

// zlib is loaded by nothing else here, so a second unload would unmap it.
TEST(VornLibraryTest, LoadsByExactNameAndACopyKeepsTheLibraryLoadedAfterTheOriginalGoes)
{
    VornLibrary own(VSUPT_LIBRARY_FILE, true);
    EXPECT_EQ(nullptr, own.getProcAddr("vsupt_no_such_symbol"));
    EXPECT_NE(nullptr, own.getProcAddr("g_ModuleData"));
    if (!std::filesystem::exists("/lib/x86_64-linux-gnu/libz.so.1")) {
        GTEST_SKIP() << "no libz.so.1 to load";
    }
    auto* original = new VornLibrary("libz.so.1", true);
    VornLibrary copy(*original);
    delete original;
    EXPECT_NE(nullptr, copy.getProcAddr("zlibVersion"));
}
