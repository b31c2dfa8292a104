// Conversions between narrow and wide text, trimming, and the bridges to
// NUL-terminated text.
//
// narrow and widen are the library's only bridges between std::string and
// std::wstring; callers pass VornLocaleFactory::getDefaultLocale. Both go
// through the locale's ctype<wchar_t> facet, stop at the first NUL, put a
// blank where narrow cannot represent a character, and let out nothing but
// VornException: any other exception that tries to leave them ends the
// process. Every function here is reentrant, owns nothing it was given and
// takes no lock.
#ifndef VSUPT_VORNSTRINGUTILITIES_H
#define VSUPT_VORNSTRINGUTILITIES_H

#include <vsupt/VsuptExport.h>

#include <cstdint>
#include <locale>
#include <string>

namespace VornSupport {

class VSUPT_API VornStringUtilities {
public:
    // Values other than these are accepted and remove nothing.
    enum tTrimOption : std::int32_t {
        trimLeft = 0,
        trimRight = 1,
        trimBoth = 2
    };

    // Throws VornException when the facet fails.
    static std::string narrow(const std::wstring& source, std::locale loc);
    // Throws VornException when the facet fails.
    static std::wstring widen(const std::string& source, std::locale loc);

    // Removes the characters of chars from the chosen end(s). Provided for
    // std::string and std::wstring.
    template <class S>
    static S trim(const S& source, const S& chars, tTrimOption option);
};

VSUPT_API std::string VornStringFromChar(const char* text);

// Copies the text up to its first NUL, with the terminator, and returns
// buffer. Returns null, writing nothing, when buffer is null or size (taken
// as unsigned, so a negative size is no limit) leaves no room for the
// terminator.
VSUPT_API char* VornStringToChar(const std::string& source, char* buffer, int size);

// The locale the environment names, or the default locale when the
// environment names one the system does not know.
VSUPT_API std::locale GetAppropriateLocaleObject();

}  // namespace VornSupport

#endif
