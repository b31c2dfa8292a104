#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornStringUtilities.h>

namespace VornSupport {

const LanguageTableEntry g_LanguageTable[6] = {
    {"English", "en", VornLocaleFactory::LanguageEnglish},
    {"German", "de", VornLocaleFactory::LanguageGerman},
    {"Spanish", "es", VornLocaleFactory::LanguageSpanish},
    {"French", "fr", VornLocaleFactory::LanguageFrench},
    {"Japanese", "ja", VornLocaleFactory::LanguageJapanese},
    {"Chinese", "zh", VornLocaleFactory::LanguageChinese},
};

const LocaleTableEntry g_LocaleTable[7] = {
    {VornLocaleFactory::LanguageGerman, "german"},   {VornLocaleFactory::LanguageEnglish, "en_US"},
    {VornLocaleFactory::LanguageSpanish, "spanish"}, {VornLocaleFactory::LanguageFrench, "french"},
    {VornLocaleFactory::LanguageJapanese, "japanese"}, {VornLocaleFactory::LanguageChinese, "C"},
    {VornLocaleFactory::LanguageUnnamed, "C"},
};

// Mexico has the code "ES" and Spain has no row: the table is kept as the
// programs that use it know it.
const CountryTableEntry g_CountryTable[7] = {
    {"United States", "US"}, {"Germany", "DE"}, {"Mexico", "ES"}, {"France", "FR"},
    {"Japan", "JP"},         {"People's Republic of China", "CN"}, {"Taiwan", "TW"},
};

// The maps and the default locale are made before the library's other
// statics and destroyed after them, so that text conversions work during
// the whole start and stop sequence.
std::map<std::string, std::string> g_oLanguageData __attribute__((init_priority(101)));
std::map<std::string, VornLocaleFactory::Language> g_oLanguageCodeData __attribute__((init_priority(101)));
std::map<std::string, std::string> g_oCountryData __attribute__((init_priority(101)));
std::map<VornLocaleFactory::Language, std::string> g_oLocaleData __attribute__((init_priority(101)));

std::locale VornLocaleFactory::m_oDefaultLocale __attribute__((init_priority(101))) = GetAppropriateLocaleObject();

namespace {

std::string shortCode(const std::string& name, const std::map<std::string, std::string>& codes)
{
    const auto code = codes.find(name);
    return code == codes.end() ? name : code->second;
}

}  // namespace

std::locale VornLocaleFactory::getDefaultLocale(bool)
{
    return m_oDefaultLocale;
}

void VornLocaleFactory::initializeLanguageCountryCode()
{
    for (const LocaleTableEntry& row : g_LocaleTable) {
        g_oLocaleData.emplace(row.m_language, row.m_localeName);
    }
    for (const CountryTableEntry& row : g_CountryTable) {
        g_oCountryData.emplace(row.m_name, row.m_code);
    }
    for (const LanguageTableEntry& row : g_LanguageTable) {
        g_oLanguageData.emplace(row.m_name, row.m_code);
        g_oLanguageCodeData.emplace(row.m_name, row.m_language);
    }
}

std::string VornLocaleFactory::getCountry(const std::locale& locale)
{
    const std::string name = locale.name();
    const std::string::size_type underscore = name.find('_');
    std::string country = underscore == std::string::npos ? name : name.substr(underscore + 1);
    country = country.substr(0, country.find('.'));
    return shortCode(country, g_oCountryData);
}

std::string VornLocaleFactory::getLanguage(const std::locale& locale)
{
    const std::string name = locale.name();
    return shortCode(name.substr(0, name.find('_')), g_oLanguageData);
}

std::locale VornLocaleFactory::getLocale(Language language)
{
    const auto entry = g_oLocaleData.find(language);
    if (entry != g_oLocaleData.end()) {
        try {
            return std::locale(entry->second);
        } catch (const std::exception&) {
            // The system does not have that locale.
        }
    }
    return std::locale("C");
}

}  // namespace VornSupport
