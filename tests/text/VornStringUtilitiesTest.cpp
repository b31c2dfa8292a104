#include <vsupt/VornException.h>
#include <vsupt/VornStringUtilities.h>
#include <vsupt/ansi_ctype.h>
#include <vsupt/utf8_ctype.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <stdexcept>
#include <string>

using VornSupport::VornException;
using VornSupport::VornStringToChar;
using VornSupport::VornStringUtilities;

namespace {

// A ctype facet whose range conversions throw the value it was given.
template <class Thrown>
class ThrowingCtype : public std::ctype<wchar_t> {
public:
    explicit ThrowingCtype(Thrown thrown) : m_thrown(thrown) {}

protected:
    const wchar_t* do_narrow(const wchar_t*, const wchar_t*, char, char*) const override { throw m_thrown; }
    const char* do_widen(const char*, const char*, wchar_t*) const override { throw m_thrown; }

private:
    Thrown m_thrown;
};

template <class Thrown>
std::locale throwingLocale(Thrown thrown)
{
    return std::locale(std::locale::classic(), new ThrowingCtype<Thrown>(thrown));
}

std::atomic<bool> g_insideBlockingFacet(false);

// Narrowing sleeps in a cancellation point for ever.
class BlockingCtype : public std::ctype<wchar_t> {
protected:
    const wchar_t* do_narrow(const wchar_t*, const wchar_t*, char, char*) const override
    {
        g_insideBlockingFacet = true;
        for (;;) {
            sleep(1);
        }
    }
};

void* narrowWithBlockingFacet(void*)
{
    VornStringUtilities::narrow(L"text", std::locale(std::locale::classic(), new BlockingCtype));
    return nullptr;
}

std::string trim(const std::string& source, const std::string& chars, int option)
{
    return VornStringUtilities::trim(source, chars, static_cast<VornStringUtilities::tTrimOption>(option));
}

}  // namespace

TEST(VornStringUtilitiesTest, NarrowPutsABlankForACharacterTheLocaleCannotRepresent)
{
    EXPECT_EQ(VornStringUtilities::narrow(L"a\u4e2db", std::locale::classic()), "a b");
}

TEST(VornStringUtilitiesTest, NarrowAndWidenStopAtTheFirstNul)
{
    EXPECT_EQ(VornStringUtilities::narrow(std::wstring(L"a\0b", 3), std::locale::classic()), "a");
    EXPECT_EQ(VornStringUtilities::widen(std::string("a\0b", 3), std::locale::classic()), L"a");
}

TEST(VornStringUtilitiesTest, AFailingFacetBecomesAVornExceptionWithItsText)
{
    const std::locale loc = throwingLocale(std::runtime_error("facet broken"));
    try {
        VornStringUtilities::narrow(L"text", loc);
        FAIL() << "narrow did not throw";
    } catch (VornException& error) {
        EXPECT_EQ(error.getText(), "VornStringUtilities::narrow: ctype facet cannot be created for the locale - facet broken");
        EXPECT_EQ(error.getCode(), 0);
    }
    try {
        VornStringUtilities::widen("text", loc);
        FAIL() << "widen did not throw";
    } catch (VornException& error) {
        EXPECT_EQ(error.getText(), "VornStringUtilities::widen: ctype facet cannot be created for the locale - facet broken");
    }
}

TEST(VornStringUtilitiesTest, AVornExceptionFromTheFacetPassesUntouched)
{
    try {
        VornStringUtilities::narrow(L"text", throwingLocale(VornException("from the facet", 5)));
        FAIL() << "narrow did not throw";
    } catch (VornException& error) {
        EXPECT_EQ(error.getText(), "from the facet");
        EXPECT_EQ(error.getCode(), 5);
    }
}

TEST(VornStringUtilitiesDeathTest, AForeignExceptionFromTheFacetEndsTheProcess)
{
    const std::locale loc = throwingLocale(42);
    EXPECT_DEATH(VornStringUtilities::narrow(L"text", loc), "terminate called after throwing an instance of 'int'");
    EXPECT_DEATH(VornStringUtilities::widen("text", loc), "terminate called after throwing an instance of 'int'");
}

TEST(VornStringUtilitiesTest, CancellationOfAThreadInsideNarrowUnwindsThroughIt)
{
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, narrowWithBlockingFacet, nullptr), 0);
    while (!g_insideBlockingFacet) {
        usleep(1000);
    }
    pthread_cancel(thread);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
}

TEST(VornStringUtilitiesTest, TrimRemovesFromTheChosenEndsAndKeepsInnerCharacters)
{
    EXPECT_EQ(trim("  a b  ", " ", VornStringUtilities::trimLeft), "a b  ");
    EXPECT_EQ(trim("  a b  ", " ", VornStringUtilities::trimRight), "  a b");
    EXPECT_EQ(trim("  a b  ", " ", VornStringUtilities::trimBoth), "a b");
    EXPECT_EQ(VornStringUtilities::trim<std::wstring>(L"\r\n\tvalue \t", L" \t\r\n", VornStringUtilities::trimBoth),
              L"value");
}

TEST(VornStringUtilitiesTest, TrimOfOnlySetCharactersOrOfNothingIsEmpty)
{
    for (int option : {VornStringUtilities::trimLeft, VornStringUtilities::trimRight, VornStringUtilities::trimBoth}) {
        EXPECT_EQ(trim(" \t \n", " \t\r\n", option), "") << option;
        EXPECT_EQ(trim("", " ", option), "") << option;
    }
}

TEST(VornStringUtilitiesTest, TrimWithAnUnknownOptionOrAnEmptySetRemovesNothing)
{
    EXPECT_EQ(trim("  a  ", " ", 3), "  a  ");
    EXPECT_EQ(trim("  a  ", " ", -1), "  a  ");
    EXPECT_EQ(trim("  a  ", "", VornStringUtilities::trimBoth), "  a  ");
}

TEST(VornStringUtilitiesTest, StringToCharCopiesOnlyWhenTheTerminatorFits)
{
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(VornStringToChar("abc", buffer, 3), nullptr);
    EXPECT_EQ(std::string(buffer, sizeof buffer), "########");
    EXPECT_EQ(VornStringToChar("abc", buffer, 4), buffer);
    EXPECT_EQ(std::string(buffer, sizeof buffer), std::string("abc\0####", 8));
    EXPECT_EQ(VornStringToChar("abc", nullptr, 100), nullptr);
}

TEST(VornStringUtilitiesTest, StringToCharTakesANegativeSizeAsNoLimitAndStopsAtANul)
{
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(VornStringToChar(std::string("ab\0cd", 5), buffer, -1), buffer);
    EXPECT_EQ(std::string(buffer, sizeof buffer), std::string("ab\0#####", 8));
}

TEST(VornStringUtilitiesTest, AnUnknownLocaleInTheEnvironmentGivesTheDefaultLocale)
{
    const char* saved = std::getenv("LC_ALL");
    const std::string savedValue = saved != nullptr ? saved : "";
    setenv("LC_ALL", "xx_NOWHERE.NONE", 1);
    const std::locale loc = VornSupport::GetAppropriateLocaleObject();
    if (saved != nullptr) {
        setenv("LC_ALL", savedValue.c_str(), 1);
    } else {
        unsetenv("LC_ALL");
    }
    EXPECT_EQ(loc.name(), std::locale().name());
}

namespace {

template <class Facet>
class InertCtypeTest : public testing::Test {
};

using InertFacets = testing::Types<VornSupport::ansi_ctype, VornSupport::utf8_ctype>;
TYPED_TEST_SUITE(InertCtypeTest, InertFacets);

}  // namespace

TYPED_TEST(InertCtypeTest, ConvertsNothing)
{
    struct Exposed : TypeParam {
        Exposed() : TypeParam(1) {}
        wchar_t widenOrDefault(char c, wchar_t dfault) const { return this->do_widen(c, dfault); }
    };
    const Exposed facet;
    EXPECT_EQ(facet.narrow(L'a', '?'), '?');
    EXPECT_EQ(facet.widenOrDefault('a', L'?'), L'?');

    const wchar_t wide[] = L"ab";
    char narrowed[] = "##";
    EXPECT_EQ(facet.narrow(wide, wide + 2, '?', narrowed), wide);
    EXPECT_STREQ(narrowed, "##");
    const char source[] = "ab";
    wchar_t widened[] = L"##";
    EXPECT_EQ(facet.widen(source, source + 2, widened), source);
    EXPECT_STREQ(widened, L"##");

    const std::locale loc(std::locale::classic(), new TypeParam(0));
    EXPECT_EQ(VornStringUtilities::narrow(L"text", loc), "");
}
