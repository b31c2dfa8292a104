#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornException.h>
#include <vsupt/ansi_ctype.h>
#include <vsupt/utf8_ctype.h>

#include "frame/ExceptionBorder.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <vector>

namespace VornSupport {

namespace {

// Conversion buffers hold four times the source plus four characters,
// counted as a signed 32-bit number. A source too long for that count fails
// as an allocation of a negative size does, rather than overrunning a buffer
// whose size has wrapped around.
std::size_t conversionBufferLength(std::size_t sourceLength)
{
    const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(sourceLength * 4 + 4));
    if (length < 0 || static_cast<std::size_t>(length) <= sourceLength) {
        throw std::bad_array_new_length();
    }
    return static_cast<std::size_t>(length);
}

// The buffer always ends in NUL: the conversion writes at most one character
// per source character.
template <class CharT>
std::basic_string<CharT> textBeforeFirstNul(const std::vector<CharT>& buffer)
{
    return std::basic_string<CharT>(buffer.begin(), std::find(buffer.begin(), buffer.end(), CharT()));
}

std::string narrowWith(const std::wstring& source, const std::locale& loc)
{
    const std::ctype<wchar_t>& facet = std::use_facet<std::ctype<wchar_t>>(loc);
    std::vector<char> buffer(conversionBufferLength(source.size()));
    facet.narrow(source.data(), source.data() + source.size(), ' ', buffer.data());
    return textBeforeFirstNul(buffer);
}

std::wstring widenWith(const std::string& source, const std::locale& loc)
{
    const std::ctype<wchar_t>& facet = std::use_facet<std::ctype<wchar_t>>(loc);
    std::vector<wchar_t> buffer(conversionBufferLength(source.size()));
    facet.widen(source.data(), source.data() + source.size(), buffer.data());
    return textBeforeFirstNul(buffer);
}

template <class S>
S trimFront(const S& source, const S& chars)
{
    const typename S::size_type first = source.find_first_not_of(chars);
    return first == S::npos ? S() : source.substr(first);
}

template <class S>
S trimBack(const S& source, const S& chars)
{
    const typename S::size_type last = source.find_last_not_of(chars);
    return last == S::npos ? S() : source.substr(0, last + 1);
}

}  // namespace

// ---------------------------------------------------------------------------
// VornStringUtilities

std::string VornStringUtilities::narrow(const std::wstring& source, std::locale loc)
{
    return letOutOnly<VornException>([&] {
        try {
            return narrowWith(source, loc);
        } catch (std::exception& error) {
            throw VornException(
                std::string("VornStringUtilities::narrow: ctype facet cannot be created for the locale - ") + error.what(),
                0);
        }
    });
}

std::wstring VornStringUtilities::widen(const std::string& source, std::locale loc)
{
    return letOutOnly<VornException>([&] {
        try {
            return widenWith(source, loc);
        } catch (std::exception& error) {
            throw VornException(
                std::string("VornStringUtilities::widen: ctype facet cannot be created for the locale - ") + error.what(),
                0);
        }
    });
}

template <class S>
S VornStringUtilities::trim(const S& source, const S& chars, tTrimOption option)
{
    switch (option) {
    case trimLeft:
        return trimFront(source, chars);
    case trimRight:
        return trimBack(source, chars);
    case trimBoth:
        return trimBack(trimFront(source, chars), chars);
    default:
        return source;
    }
}

template std::string VornStringUtilities::trim<std::string>(
    const std::string&, const std::string&, tTrimOption);
template std::wstring VornStringUtilities::trim<std::wstring>(
    const std::wstring&, const std::wstring&, tTrimOption);

// ---------------------------------------------------------------------------
// Free functions

std::string VornStringFromChar(const char* text)
{
    return std::string(text);
}

char* VornStringToChar(const std::string& source, char* buffer, int size)
{
    if (buffer == nullptr) {
        return nullptr;
    }
    if (static_cast<std::uint32_t>(size) <= source.length()) {
        return nullptr;
    }
    std::strcpy(buffer, source.c_str());
    return buffer;
}

VSUPT_CATCHES_FORCED_UNWIND std::locale GetAppropriateLocaleObject()
{
    try {
        return std::locale("");
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (...) {
        return std::locale();
    }
}

// ---------------------------------------------------------------------------
// ansi_ctype

ansi_ctype::ansi_ctype(unsigned long refs) : std::ctype<wchar_t>(refs) {}

ansi_ctype::~ansi_ctype() = default;

const char* ansi_ctype::do_widen(const char* lo, const char*, wchar_t*) const
{
    return lo;
}

char ansi_ctype::do_narrow(wchar_t, char dfault) const
{
    return dfault;
}

const wchar_t* ansi_ctype::do_narrow(const wchar_t* lo, const wchar_t*, char, char*) const
{
    return lo;
}

wchar_t ansi_ctype::do_widen(char, wchar_t dfault) const
{
    return dfault;
}

// ---------------------------------------------------------------------------
// utf8_ctype

utf8_ctype::utf8_ctype(unsigned long refs) : std::ctype<wchar_t>(refs) {}

utf8_ctype::~utf8_ctype() = default;

const char* utf8_ctype::do_widen(const char* lo, const char*, wchar_t*) const
{
    return lo;
}

char utf8_ctype::do_narrow(wchar_t, char dfault) const
{
    return dfault;
}

const wchar_t* utf8_ctype::do_narrow(const wchar_t* lo, const wchar_t*, char, char*) const
{
    return lo;
}

wchar_t utf8_ctype::do_widen(char, wchar_t dfault) const
{
    return dfault;
}

}  // namespace VornSupport
