/// @class char_traits_ci
/// Character traits that compare without regard to case, and the two
/// case-insensitive string types built on them, ci_string and ci_wstring.
///
/// Characters are folded with the C library's tolower and towlower, so the
/// folding follows the process's character type setting (setlocale), not any
/// std::locale object. A folded narrow character is a char again and folded
/// characters compare as signed int, so bytes of 0x80 and above sort below
/// every ASCII character; wide characters compare as unsigned 32-bit values
/// and never do. Copying, assigning, length and the
/// end-of-file group are those of std::char_traits.
///
/// The traits hold no state and take no lock; they may run on any thread as
/// long as nobody changes the C library's locale meanwhile. The templates
/// stand in the global namespace; VornSupport names the two string types too.

/// @file
/// Case-insensitive character traits and the string types built on them.
#ifndef VSUPT_CHAR_TRAITS_CI_H
#define VSUPT_CHAR_TRAITS_CI_H

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cwctype>
#include <string>
#include <type_traits>

template <class CharT>
class char_traits_ci : public std::char_traits<CharT> {
public:
    /// The character type.
    using char_type = CharT;

    /// Whether a and b are equal once folded.
    static bool eq(char_type a, char_type b)
    {
        return fold(a) == fold(b);
    }

    /// Whether a comes before b once folded.
    static bool lt(char_type a, char_type b)
    {
        return fold(a) < fold(b);
    }

    /// Compares n characters once folded, as std::char_traits does.
    static int compare(const char_type* a, const char_type* b, std::size_t n)
    {
        for (std::size_t i = 0; i < n; ++i) {
            const folded_type left = fold(a[i]);
            const folded_type right = fold(b[i]);
            if (left != right) {
                return left < right ? -1 : 1;
            }
        }
        return 0;
    }

    /// A null pointer when none of the n characters matches.
    static const char_type* find(const char_type* s, std::size_t n, const char_type& c)
    {
        const folded_type wanted = fold(c);
        for (std::size_t i = 0; i < n; ++i) {
            if (fold(s[i]) == wanted) {
                return s + i;
            }
        }
        return nullptr;
    }

private:
    using folded_type = std::conditional_t<std::is_same_v<CharT, char>, int, std::uint32_t>;

    static folded_type fold(char_type c);
};

template <>
inline char_traits_ci<char>::folded_type char_traits_ci<char>::fold(char c)
{
    /// tolower is defined for unsigned byte values only (the compiler
    /// exploits that), so the byte goes in unsigned; the folded character is
    /// a signed char again.
    return static_cast<signed char>(std::tolower(static_cast<unsigned char>(c)));
}

template <>
inline char_traits_ci<wchar_t>::folded_type char_traits_ci<wchar_t>::fold(wchar_t c)
{
    return static_cast<std::uint32_t>(std::towlower(static_cast<std::wint_t>(c)));
}

/// A narrow string that compares without regard to case.
typedef std::basic_string<char, char_traits_ci<char>> ci_string;
/// A wide string that compares without regard to case.
typedef std::basic_string<wchar_t, char_traits_ci<wchar_t>> ci_wstring;

namespace VornSupport {

using ::ci_string;
using ::ci_wstring;

}  // namespace VornSupport

#endif
