#include "support/ThrownText.h"

#include <vsupt/VornException.h>
#include <vsupt/VornMessageSet.h>
#include <vsupt/VornMissingMessageException.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

using namespace VornSupport;

namespace {

// The set "msgs" in a scratch directory; for the locale "C" its language
// file is msgs_C.pro and its country file msgs_C_C.pro.
class VornMessageSetTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_NE(mkdtemp(m_directory), nullptr); }
    void TearDown() override { std::system(("rm -rf '" + std::string(m_directory) + "'").c_str()); }

    void write(const std::string& suffix, const std::string& text) { std::ofstream(base() + suffix + ".pro") << text; }
    std::string base() const { return std::string(m_directory) + "/msgs"; }
    VornMessageSet load() const { return VornMessageSet(base(), std::locale::classic()); }

    char m_directory[32] = "/tmp/vsupt-messages-XXXXXX";
};

}  // namespace

TEST_F(VornMessageSetTest, TheBaseFileIsRequiredEvenWithALanguageFile)
{
    write("_C", "a=language\n");
    EXPECT_EQ(thrownTextAndCode([&] { load(); }),
              "VornProperties<StringType>::loadProperties: couldn't open file " + base() + ".pro (0)");
}

TEST_F(VornMessageSetTest, LaterFilesReplaceSingleMessagesAndUnknownKeysAreReported)
{
    write("", "base=first\nbase=base\nlanguage=base\nall=base\n# hidden=1\n");
    write("_C", "language=language\nall=language\n#base=language\n");
    write("_C_C", "all=country\n");
    const VornMessageSet messages = load();
    EXPECT_EQ(messages.getMessage("base"), L"base");
    EXPECT_EQ(messages.getMessage("language"), L"language");
    EXPECT_EQ(messages.getMessage("all"), L"country");
    try {
        messages.getMessage("# hidden");
        FAIL() << "no exception";
    } catch (const VornMissingMessageException& error) {
        EXPECT_EQ(error.getText(), "VornMissingMessageException - Missing # hidden");
    }
    // A country file loads without a language file.
    std::remove((base() + "_C.pro").c_str());
    EXPECT_EQ(load().getMessage("all"), L"country");
    EXPECT_EQ(load().getMessage("language"), L"base");
}

// A FIFO would block the constructor and a device never end it: both are
// files that cannot be opened, required or not.
TEST_F(VornMessageSetTest, SetFilesThatAreNoRegularFilesCannotBeOpened)
{
    ASSERT_EQ(0, mkfifo((base() + ".pro").c_str(), 0600));
    EXPECT_EQ(thrownTextAndCode([&] { load(); }),
              "VornProperties<StringType>::loadProperties: couldn't open file " + base() + ".pro (0)");
    std::remove((base() + ".pro").c_str());
    write("", "a=base\n");
    ASSERT_EQ(0, symlink("/dev/zero", (base() + "_C.pro").c_str()));
    EXPECT_EQ(load().getMessage("a"), L"base");
}
