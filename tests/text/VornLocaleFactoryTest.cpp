#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <initializer_list>
#include <clocale>
#include <locale.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace VornSupport;
using Factory = VornLocaleFactory;

// glibc's newlocale does not free the search path it builds from LOCPATH;
// LeakSanitizer is told to pass over that one allocation.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:__argz_add_sep\n";
}

namespace {

// Whether the C library can load the locale of this name now. Asked in a
// child process, because glibc remembers a locale it failed to load for the
// rest of the process.
bool localeLoads(const std::string& name)
{
    const pid_t child = fork();
    if (child == 0) {
        const locale_t locale = newlocale(LC_ALL_MASK, name.c_str(), nullptr);
        _exit(locale != nullptr ? 0 : 1);
    }
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Locales under the names the tests need, made with localedef for the build
// tree and found through LOCPATH. A locale that does not load (none yet, or
// the empty directory a failed localedef leaves) is made anew beside its
// place and then moved there, which replaces an empty directory but not a
// complete locale, so that tests running at once never see half a locale. Without the system's locale sources (Debian's locales package)
// the tests are skipped.
class VornLocaleFactoryNameTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        const std::string directory = VSUPT_TEST_LOCALE_DIR;
        setenv("LOCPATH", directory.c_str(), 1);
        for (const std::string name : {"en_US", "en_US.UTF-8", "English_United States"}) {
            if (localeLoads(name)) {
                continue;
            }
            const std::string path = directory + "/" + name;
            const std::string scratch = path + "." + std::to_string(getpid());
            const std::string command = "mkdir -p '" + directory + "' && localedef -i en_US -f UTF-8 '" + scratch +
                                        "' >/dev/null 2>&1; mv -T '" + scratch + "' '" + path +
                                        "' 2>/dev/null || rm -rf '" + scratch + "'";
            if (std::system(command.c_str()) != 0 || !localeLoads(name)) {
                GTEST_SKIP() << "localedef could not make the locale " << name << " (is the locales package installed?)";
            }
        }
    }

    void TearDown() override { unsetenv("LOCPATH"); }
};

// The language and the country read from the locale of each name.
void expectPieces(std::initializer_list<std::array<const char*, 3>> rows)
{
    for (const auto& row : rows) {
        const std::locale locale(row[0]);
        EXPECT_EQ(Factory::getLanguage(locale) + "/" + Factory::getCountry(locale), std::string(row[1]) + "/" + row[2])
            << row[0];
    }
}

}  // namespace

TEST(VornLocaleFactoryTest, TheDefaultLocaleIsTheEnvironmentsWhateverTheFlag)
{
    const std::string environment = GetAppropriateLocaleObject().name();
    EXPECT_EQ(Factory::getDefaultLocale(true).name(), environment);
    EXPECT_EQ(Factory::getDefaultLocale(false).name(), environment);
}

// The maps are process-wide and filled here: names and locales before and
// after.
TEST_F(VornLocaleFactoryNameTest, LongNamesTurnIntoCodesAndLanguagesIntoLocalesOnceTheMapsAreFilled)
{
    expectPieces({{"English_United States", "English", "United States"},
                  {"en_US.UTF-8", "en", "US"},
                  {"C.utf8", "C.utf8", "C"}});
    EXPECT_EQ(Factory::getLocale(Factory::LanguageEnglish).name(), "C");

    Factory::initializeLanguageCountryCode();
    Factory::initializeLanguageCountryCode();
    expectPieces({{"English_United States", "en", "US"}, {"C", "C", "C"}});
    EXPECT_EQ(g_oLanguageData.size(), 6u);
    EXPECT_EQ(g_oLanguageCodeData.at("Spanish"), Factory::LanguageSpanish);
    EXPECT_EQ(g_oCountryData.size(), 7u);
    EXPECT_EQ(g_oCountryData.at("Mexico"), "ES");
    EXPECT_EQ(g_oLocaleData.size(), 7u);

    EXPECT_EQ(Factory::getLocale(Factory::LanguageEnglish).name(), "en_US");
    // "C" where the table or the system has no locale.
    for (int language : {0, 5, 6, 42}) {
        EXPECT_EQ(Factory::getLocale(static_cast<Factory::Language>(language)).name(), "C") << language;
    }
}
