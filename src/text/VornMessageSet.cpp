#include <vsupt/VornException.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornMessageSet.h>
#include <vsupt/VornMissingMessageException.h>
#include <vsupt/VornStringUtilities.h>

#include <utility>

namespace VornSupport {

namespace {

std::string fileName(const std::string& stem)
{
    return stem + ".pro";
}

// The language and country files only refine the base file: one that can't
// be opened is passed over.
void loadOptionalFile(VornProperties<std::wstring>& messages, const std::string& path)
{
    try {
        messages.loadProperties(path, L'=');
    } catch (const VornException&) {
    }
}

}  // namespace

VornMessageSet::VornMessageSet(const std::string& baseName, std::locale locale)
    : m_locale(std::move(locale)), m_messages(false)
{
    loadSet(baseName);
}

VornMessageSet::~VornMessageSet() = default;

void VornMessageSet::loadSet(const std::string& baseName)
{
    m_messages.loadProperties(fileName(baseName), L'=');
    const std::string language = VornLocaleFactory::getLanguage(m_locale);
    if (language.empty()) {
        return;
    }
    loadOptionalFile(m_messages, fileName(baseName + "_" + language));
    const std::string country = VornLocaleFactory::getCountry(m_locale);
    if (country.empty()) {
        return;
    }
    loadOptionalFile(m_messages, fileName(baseName + "_" + language + "_" + country));
}

std::wstring VornMessageSet::getMessage(const std::string& key) const
{
    std::wstring message;
    if (!m_messages.getPropertyValue(VornStringUtilities::widen(key, VornLocaleFactory::getDefaultLocale(true)),
                                     message)) {
        throw VornMissingMessageException(key);
    }
    return message;
}

}  // namespace VornSupport
