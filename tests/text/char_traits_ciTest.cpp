#include <vsupt/char_traits_ci.h>

#include <gtest/gtest.h>

#include <clocale>
#include <map>
#include <string>

namespace {

// Folding follows the C library's locale; the tests pin it to "C".
class char_traits_ciTest : public testing::Test {
protected:
    void SetUp() override { std::setlocale(LC_ALL, "C"); }
    void TearDown() override { std::setlocale(LC_ALL, m_saved.c_str()); }

private:
    std::string m_saved = std::setlocale(LC_ALL, nullptr);
};

}  // namespace

TEST_F(char_traits_ciTest, FindAndMapKeysIgnoreCase)
{
    EXPECT_EQ(ci_string("ABC").find('b', 0), 1u);
    EXPECT_EQ(ci_string("ABC").find('b', 2), ci_string::npos);
    EXPECT_EQ(ci_string("Hello World").find("WORLD"), 6u);
    EXPECT_EQ(ci_wstring(L"ABC").find(L'b', 3), ci_wstring::npos);

    std::map<ci_string, int> narrow{{"Key", 1}};
    narrow["KEY"] = 2;
    ASSERT_EQ(narrow.size(), 1u);
    EXPECT_EQ(narrow.begin()->second, 2);
    EXPECT_STREQ(narrow.begin()->first.c_str(), "Key");
    std::map<ci_wstring, int> wide{{L"Key", 1}, {L"kEY", 2}};
    EXPECT_EQ(wide.size(), 1u);
}

TEST_F(char_traits_ciTest, TheFoldedPrefixDecidesThenTheShorterSortsFirst)
{
    EXPECT_EQ(ci_string("Hello"), ci_string("hELLO"));
    EXPECT_LT(ci_string("abc"), ci_string("ABD"));
    EXPECT_LT(ci_string("AB"), ci_string("abc"));
    EXPECT_GT(ci_string("b"), ci_string("ABC"));
    EXPECT_LT(ci_wstring(L"AB"), ci_wstring(L"abc"));
}

TEST_F(char_traits_ciTest, AHighByteSortsBelowAsciiButAHighWideCharacterDoesNot)
{
    EXPECT_LT(ci_string("\xe9").compare("a"), 0);
    EXPECT_TRUE(char_traits_ci<char>::lt('\xe9', 'a'));
    EXPECT_GT(ci_wstring(L"\u00e9").compare(L"a"), 0);
    EXPECT_FALSE(char_traits_ci<wchar_t>::lt(L'\u00e9', L'a'));
}
