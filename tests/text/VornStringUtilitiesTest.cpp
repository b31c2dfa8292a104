#include "support/ThrownText.h"

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
using Strings = VornSupport::VornStringUtilities;

namespace {

// A locale whose ctype facet throws the value it was given from its range
// conversions.
template <class Thrown>
std::locale throwingLocale(Thrown thrown)
{
    struct Facet : std::ctype<wchar_t> {
        explicit Facet(Thrown value) : m_thrown(value) {}
        const wchar_t* do_narrow(const wchar_t*, const wchar_t*, char, char*) const override { throw m_thrown; }
        const char* do_widen(const char*, const char*, wchar_t*) const override { throw m_thrown; }
        Thrown m_thrown;
    };
    return std::locale(std::locale::classic(), new Facet(thrown));
}

}  // namespace

TEST(VornStringUtilitiesTest, NarrowBlanksWhatTheLocaleCannotHoldAndBothStopAtTheFirstNul)
{
    const std::locale classic = std::locale::classic();
    EXPECT_EQ(Strings::narrow(L"a\u4e2db", classic), "a b");
    EXPECT_EQ(Strings::narrow(std::wstring(L"a\0b", 3), classic), "a");
    EXPECT_EQ(Strings::widen(std::string("a\0b", 3), classic), L"a");
}

TEST(VornStringUtilitiesTest, AFailingFacetBecomesAVornExceptionUnlessItIsOneAlready)
{
    const std::locale broken = throwingLocale(std::runtime_error("facet broken"));
    EXPECT_EQ(thrownTextAndCode([&] { Strings::narrow(L"text", broken); }),
              "VornStringUtilities::narrow: ctype facet cannot be created for the locale - facet broken (0)");
    EXPECT_EQ(thrownTextAndCode([&] { Strings::widen("text", broken); }),
              "VornStringUtilities::widen: ctype facet cannot be created for the locale - facet broken (0)");
    EXPECT_EQ(thrownTextAndCode([] { Strings::narrow(L"text", throwingLocale(VornException("from the facet", 5))); }),
              "from the facet (5)");
}

TEST(VornStringUtilitiesDeathTest, AForeignExceptionFromTheFacetEndsTheProcess)
{
    const std::locale loc = throwingLocale(42);
    EXPECT_DEATH(Strings::narrow(L"text", loc), "terminate called after throwing an instance of 'int'");
    EXPECT_DEATH(Strings::widen("text", loc), "terminate called after throwing an instance of 'int'");
}

TEST(VornStringUtilitiesTest, CancellationOfAThreadInsideNarrowUnwindsThroughIt)
{
    static std::atomic<bool> inside(false);
    // Narrowing sleeps in a cancellation point for ever.
    struct Blocking : std::ctype<wchar_t> {
        const wchar_t* do_narrow(const wchar_t*, const wchar_t*, char, char*) const override
        {
            for (inside = true;;) {
                sleep(1);
            }
        }
    };
    const auto narrowBlocking = [](void*) -> void* {
        Strings::narrow(L"text", std::locale(std::locale::classic(), new Blocking));
        return nullptr;
    };
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, narrowBlocking, nullptr), 0);
    while (!inside) {
        usleep(1000);
    }
    pthread_cancel(thread);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
}

TEST(VornStringUtilitiesTest, TrimRemovesSetCharactersFromTheChosenEndsOnly)
{
    const auto trim = [](const std::string& source, const std::string& chars, int option) {
        return Strings::trim(source, chars, static_cast<Strings::tTrimOption>(option));
    };
    EXPECT_EQ(trim("  a b  ", " ", Strings::trimLeft), "a b  ");
    EXPECT_EQ(trim("  a b  ", " ", Strings::trimRight), "  a b");
    EXPECT_EQ(Strings::trim<std::wstring>(L"\r\n\tvalue \t", L" \t\r\n", Strings::trimBoth), L"value");
    for (int option : {Strings::trimLeft, Strings::trimRight, Strings::trimBoth}) {
        EXPECT_EQ(trim(" \t \n", " \t\r\n", option), "") << option;
    }
    // An unknown option or an empty set removes nothing.
    EXPECT_EQ(trim("  a  ", " ", 3), "  a  ");
    EXPECT_EQ(trim("  a  ", " ", -1), "  a  ");
    EXPECT_EQ(trim("  a  ", "", Strings::trimBoth), "  a  ");
}

TEST(VornStringUtilitiesTest, StringToCharCopiesUpToANulOnlyWhenTheTerminatorFits)
{
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(VornStringToChar("abc", buffer, 3), nullptr);
    EXPECT_EQ(std::string(buffer, sizeof buffer), "########");
    EXPECT_EQ(VornStringToChar("abc", nullptr, 100), nullptr);
    EXPECT_EQ(VornStringToChar("abc", buffer, 4), buffer);
    EXPECT_EQ(std::string(buffer, sizeof buffer), std::string("abc\0####", 8));
    // A negative size sets no limit.
    EXPECT_EQ(VornStringToChar(std::string("xy\0cd", 5), buffer, -1), buffer);
    EXPECT_EQ(std::string(buffer, sizeof buffer), std::string("xy\0\0####", 8));
}

TEST(VornStringUtilitiesTest, AnUnknownLocaleInTheEnvironmentGivesTheDefaultLocale)
{
    const char* saved = std::getenv("LC_ALL");
    const std::string savedValue = saved != nullptr ? saved : "";
    setenv("LC_ALL", "xx_NOWHERE.NONE", 1);
    const std::locale loc = VornSupport::GetAppropriateLocaleObject();
    saved != nullptr ? setenv("LC_ALL", savedValue.c_str(), 1) : unsetenv("LC_ALL");
    EXPECT_EQ(loc.name(), std::locale().name());
}

TEST(InertCtypeTest, LocalesWithTheInertFacetsConvertNothing)
{
    for (const std::locale& loc : {std::locale(std::locale::classic(), new VornSupport::ansi_ctype(0)),
                                   std::locale(std::locale::classic(), new VornSupport::utf8_ctype(0))}) {
        EXPECT_EQ(Strings::narrow(L"text", loc), "");
        EXPECT_EQ(Strings::widen("text", loc), L"");
        EXPECT_EQ(std::use_facet<std::ctype<wchar_t>>(loc).narrow(L'a', '?'), '?');
    }
}
