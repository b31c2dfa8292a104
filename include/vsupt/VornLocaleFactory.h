/// @class VornSupport::VornLocaleFactory
/// Locales of the library.
///
/// m_oDefaultLocale is the process-wide default locale, taken once from the
/// environment while the library is loaded and never changed afterwards;
/// every text conversion in the library uses it. getDefaultLocale hands out
/// copies and may run on any thread.
///
/// getLanguage and getCountry take a locale's name apart as language,
/// underscore, country, point, code set, and give back the pieces, with long
/// English names (as in "English_United States") turned into short codes
/// ("en", "US") by the maps below. The maps stay empty, and the names pass
/// unchanged, until the program calls initializeLanguageCountryCode; nothing
/// in the library calls it. They are filled from the constant tables and
/// never changed after: the program fills them once, before other threads
/// read them, and nothing here takes a lock.
#ifndef VSUPT_VORNLOCALEFACTORY_H
#define VSUPT_VORNLOCALEFACTORY_H

#include <vsupt/VsuptExport.h>

#include <cstdint>
#include <locale>
#include <map>
#include <string>

namespace VornSupport {

class VSUPT_API VornLocaleFactory {
public:
    /// The languages the tables know.
    enum Language : std::int32_t {
        LanguageGerman = 0,
        LanguageEnglish = 1,
        LanguageSpanish = 2,
        LanguageFrench = 3,
        LanguageJapanese = 4,
        LanguageChinese = 5,
        // Has a locale (the "C" locale) but no language name.
        LanguageUnnamed = 6
    };

    /// The flag is ignored.
    static std::locale getDefaultLocale(bool);

    /// Fills the maps from the tables; keys already there keep their values.
    static void initializeLanguageCountryCode();
    /// The piece of the name behind the first underscore, up to its first
    /// point, as a short code where the maps know it.
    static std::string getCountry(const std::locale& locale);
    /// The piece of the name before the first underscore, as a short code
    /// where the maps know it.
    static std::string getLanguage(const std::locale& locale);
    /// The locale the table names for the language, or the "C" locale when
    /// there is none or the system lacks it.
    static std::locale getLocale(Language language);

private:
    static std::locale m_oDefaultLocale;
};

/// One row of the table from language names to codes.
struct VSUPT_API LanguageTableEntry {
    /// The language's name.
    const char* m_name;
    /// Its short code.
    const char* m_code;
    /// The language.
    VornLocaleFactory::Language m_language;
};

/// One row of the table from languages to locale names.
struct VSUPT_API LocaleTableEntry {
    /// The language.
    VornLocaleFactory::Language m_language;
    /// The name of its locale.
    const char* m_localeName;
};

/// One row of the table from country names to codes.
struct VSUPT_API CountryTableEntry {
    /// The country's name.
    const char* m_name;
    /// Its short code.
    const char* m_code;
};

/// Language names with their short codes and values.
extern VSUPT_API const LanguageTableEntry g_LanguageTable[6];
/// Languages with the names of their locales.
extern VSUPT_API const LocaleTableEntry g_LocaleTable[7];
/// Country names with their short codes.
extern VSUPT_API const CountryTableEntry g_CountryTable[7];

/// Language name to short code ("English" to "en").
extern VSUPT_API std::map<std::string, std::string> g_oLanguageData;
/// Language name to its value; filled for programs, read by nothing here.
extern VSUPT_API std::map<std::string, VornLocaleFactory::Language> g_oLanguageCodeData;
/// Country name to short code ("United States" to "US").
extern VSUPT_API std::map<std::string, std::string> g_oCountryData;
/// Language to the name of its locale.
extern VSUPT_API std::map<VornLocaleFactory::Language, std::string> g_oLocaleData;

}  // namespace VornSupport

#endif
