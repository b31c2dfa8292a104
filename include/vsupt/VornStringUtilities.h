/// @class VornSupport::VornStringUtilities
/// Conversions between narrow and wide text, trimming, the bridges to
/// NUL-terminated text, and the small text jobs: hexadecimal text, `<NAME>`
/// expansion, and splitting a text or a command line into words.
///
/// narrow and widen are the library's only bridges between std::string and
/// std::wstring; callers pass VornLocaleFactory::getDefaultLocale. Both go
/// through the locale's ctype<wchar_t> facet, stop at the first NUL, put a
/// blank where narrow cannot represent a character, and let out nothing but
/// VornException: any other exception that tries to leave them ends the
/// process. Every function here is reentrant, owns nothing it was given and
/// takes no lock; VornExpandString writes level-9 trace records.

/// @file
/// Text conversions and the small text jobs: hexadecimal text, expansion of
/// environment names, and splitting a text or a command line into words.
#ifndef VSUPT_VORNSTRINGUTILITIES_H
#define VSUPT_VORNSTRINGUTILITIES_H

#include <vsupt/VsuptExport.h>

#include <cstdint>
#include <locale>
#include <string>
#include <vector>

namespace VornSupport {

template <class StringType>
class VornProperties;

class VSUPT_API VornStringUtilities {
public:
    /// The ends trim works on. Values other than these are accepted and
    /// remove nothing.
    enum tTrimOption : std::int32_t {
        trimLeft = 0,  ///< The start of the text.
        trimRight = 1,  ///< The end of the text.
        trimBoth = 2  ///< Both ends.
    };

    /// Wide text to narrow text in the locale's ctype<wchar_t> facet. Throws
    /// VornException when the facet fails.
    static std::string narrow(const std::wstring& source, std::locale loc);
    /// Narrow text to wide text in the locale's ctype<wchar_t> facet. Throws
    /// VornException when the facet fails.
    static std::wstring widen(const std::string& source, std::locale loc);

    /// Removes the characters of chars from the chosen end(s). Provided for
    /// std::string and std::wstring.
    template <class S>
    static S trim(const S& source, const S& chars, tTrimOption option);
};

/// The NUL-terminated text as a string; text must not be null.
VSUPT_API std::string VornStringFromChar(const char* text);

//// Copies the text up to its first NUL, with the terminator, and returns
/// buffer. Returns null, writing nothing, when buffer is null or size (taken
/// as unsigned, so a negative size is no limit) leaves no room for the
/// terminator.
VSUPT_API char* VornStringToChar(const std::string& source, char* buffer, int size);

/// The locale the environment names, or the default locale when the
/// environment names one the system does not know.
VSUPT_API std::locale GetAppropriateLocaleObject();

/// Hexadecimal text to bytes, two digits a byte; a trailing odd digit is
/// ignored. Digits are not checked: a wrong one gives a wrong byte. bytes
/// must have room for half the length of hex. Returns the number of bytes.
VSUPT_API int VornHexToBytes(char* bytes, const std::string& hex);
/// Upper-case hexadecimal text of count bytes; empty when count is below 1.
VSUPT_API std::string VornBytesToHex(const char* bytes, int count);

/// Replaces each `<NAME>` by the environment variable NAME, again and again
/// from the start of the text, so that values may hold further names; an
/// unknown name gives the empty text, and an unclosed "<" stays. A value that
/// names itself never ends. Reads the environment without a lock.
VSUPT_API std::string VornExpandString(const std::string& source);
/// The same, with the properties asked before the environment.
VSUPT_API std::string VornExpandString(const std::string& source, VornProperties<std::string>& properties);

/// The first word of line, up to a blank or TAB, or the text between a
/// leading double quote and the next one; rest gets what follows the single
/// separator or the closing quote. After an unclosed quote, result and rest
/// are both the text behind it.
VSUPT_API std::string VornExtractFirstString(const std::string& line, std::string& rest);

/// Splits a block of NUL-terminated items that ends with one more NUL.
VSUPT_API void VornTokenizer(char* block, std::vector<std::string>& items);
/// The text up to its first NUL as one item, or none when it is empty.
VSUPT_API void VornTokenizer(const std::string& text, std::vector<std::string>& items);
/// Splits at any of the delimiters, overwriting text; runs of delimiters
/// count as one, and empty items never appear.
VSUPT_API void VornTokenizer(char* text, const std::string& delimiters, std::vector<std::string>& items);
/// The same on a private copy of text.
VSUPT_API void VornTokenizer(const std::string& text, const std::string& delimiters, std::vector<std::string>& items);

/// Splits a command line into the words of a program's arguments: blanks
/// separate words, double quotes protect blanks and are removed, also inside
/// a word; an unclosed quote runs to the end of the line and an empty quoted
/// word vanishes. There is no escape character. An empty line leaves words
/// as it was; any other line replaces its content.
VSUPT_API void VornParseCommandLine(const std::string& line, std::vector<std::string>& words);

}  // namespace VornSupport

#endif
