// The version macros and the library's own version agree with the project's.
#include <vsupt/VsuptVersion.h>

#include <gtest/gtest.h>

#include <string>

TEST(VsuptVersionTest, TheMacrosSpellTheProjectVersionAndTheLibraryReportsTheSame)
{
    EXPECT_STREQ(VSUPT_VERSION, VSUPT_PROJECT_VERSION);
    EXPECT_EQ(std::to_string(VSUPT_VERSION_MAJOR) + "." + std::to_string(VSUPT_VERSION_MINOR) + "." +
                  std::to_string(VSUPT_VERSION_PATCH),
              VSUPT_VERSION);
    EXPECT_STREQ(VornSupport::VsuptVersion(), VSUPT_VERSION);
}
