#include <vsupt/VornException.h>
#include <vsupt/VornMessageSet.h>
#include <vsupt/VornMissingMessageException.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <locale>
#include <string>

using namespace VornSupport;

namespace {

// A scratch directory with the set "msgs"; the locale "C" makes the
// language file msgs_C.pro and the country file msgs_C_C.pro.
class VornMessageSetTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/vsupt-messages-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        m_base = std::string(pattern) + "/msgs";
    }

    void TearDown() override { std::system(("rm -rf '" + m_base.substr(0, m_base.rfind('/')) + "'").c_str()); }

    void write(const std::string& suffix, const std::string& lines)
    {
        std::ofstream(m_base + suffix + ".pro") << lines;
    }

    VornMessageSet load() { return VornMessageSet(m_base, std::locale::classic()); }

    std::string m_base;
};

}  // namespace

TEST_F(VornMessageSetTest, TheBaseFileIsRequiredEvenWithALanguageFile)
{
    write("_C", "a=language\n");
    try {
        load();
        FAIL() << "no exception";
    } catch (const VornException& error) {
        EXPECT_EQ(error.getText(), "VornProperties<StringType>::loadProperties: couldn't open file " + m_base + ".pro");
    }
}

TEST_F(VornMessageSetTest, ABaseFileAloneIsEnoughAndUnknownKeysAreReported)
{
    write("", "# comment=1\ngreeting=hello\ngreeting=hello again\n");
    const VornMessageSet messages = load();
    EXPECT_EQ(messages.getMessage("greeting"), L"hello again");
    try {
        messages.getMessage("# comment");
        FAIL() << "no exception";
    } catch (const VornMissingMessageException& error) {
        EXPECT_EQ(error.getText(), "VornMissingMessageException - Missing # comment");
    }
}

TEST_F(VornMessageSetTest, LaterFilesReplaceSingleMessages)
{
    write("", "base=base\nlanguage=base\nall=base\n");
    write("_C", "language=language\nall=language\n#base=language\n");
    write("_C_C", "all=country\n");
    const VornMessageSet messages = load();
    EXPECT_EQ(messages.getMessage("base"), L"base");
    EXPECT_EQ(messages.getMessage("language"), L"language");
    EXPECT_EQ(messages.getMessage("all"), L"country");
}

TEST_F(VornMessageSetTest, ACountryFileLoadsWithoutALanguageFile)
{
    write("", "a=base\n");
    write("_C_C", "a=country\n");
    EXPECT_EQ(load().getMessage("a"), L"country");
}
