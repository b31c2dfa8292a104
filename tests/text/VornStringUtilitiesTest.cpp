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

template <class Action>
std::string thrownText(Action action)
{
    try {
        action();
    } catch (const VornException& error) {
        return error.getText() + " (" + std::to_string(error.getCode()) + ")";
    }
    return "nothing thrown";
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
    EXPECT_EQ(thrownText([&] { Strings::narrow(L"text", broken); }),
              "VornStringUtilities::narrow: ctype facet cannot be created for the locale - facet broken (0)");
    EXPECT_EQ(thrownText([&] { Strings::widen("text", broken); }),
              "VornStringUtilities::widen: ctype facet cannot be created for the locale - facet broken (0)");
    EXPECT_EQ(thrownText([] { Strings::narrow(L"text", throwingLocale(VornException("from the facet", 5))); }),
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
    pthread_t thread;
    const auto narrowBlocking = [](void*) -> void* {
        Strings::narrow(L"text", std::locale(std::locale::classic(), new BlockingCtype));
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, nullptr, narrowBlocking, nullptr), 0);
    while (!g_insideBlockingFacet) {
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

namespace {

template <class Facet>
class InertCtypeTest : public testing::Test {};

using InertFacets = testing::Types<VornSupport::ansi_ctype, VornSupport::utf8_ctype>;
TYPED_TEST_SUITE(InertCtypeTest, InertFacets);

}  // namespace

TYPED_TEST(InertCtypeTest, ConvertsNothing)
{
    const TypeParam facet(1);
    EXPECT_EQ(facet.narrow(L'a', '?'), '?');
    const wchar_t wide[] = L"ab";
    char narrowed[] = "##";
    EXPECT_EQ(facet.narrow(wide, wide + 2, '?', narrowed), wide);
    const char source[] = "ab";
    wchar_t widened[] = L"##";
    EXPECT_EQ(facet.widen(source, source + 2, widened), source);
    EXPECT_STREQ(narrowed, "##");
    EXPECT_STREQ(widened, L"##");
    EXPECT_EQ(Strings::narrow(L"text", std::locale(std::locale::classic(), new TypeParam(0))), "");
}
