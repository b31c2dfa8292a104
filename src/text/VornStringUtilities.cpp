#include <vsupt/VornStringUtilities.h>
#include <vsupt/VornException.h>
#include <vsupt/VornProperties.h>
#include <vsupt/ansi_ctype.h>
#include <vsupt/utf8_ctype.h>

#include "frame/ExceptionBorder.h"
#include "log/LibraryLog.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <utility>
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
// Hexadecimal text

namespace {

// Any character gives a value: lower case loses 32, then everything below
// 'A' counts from '0' and the rest from 'A' - 10.
unsigned hexDigitValue(char c)
{
    int value = c;
    if (value >= 'a') {
        value -= 32;
    }
    return static_cast<unsigned>(value < 'A' ? value - 48 : value - 55);
}

char upperHexDigit(unsigned value)
{
    return "0123456789ABCDEF"[value & 0xF];
}

}  // namespace

int VornHexToBytes(char* bytes, const std::string& hex)
{
    const auto count = static_cast<std::int32_t>(hex.length() >> 1);
    for (std::int32_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<char>((hexDigitValue(hex[2 * i]) << 4) | hexDigitValue(hex[2 * i + 1]));
    }
    return count;
}

std::string VornBytesToHex(const char* bytes, int count)
{
    std::string hex;
    for (int i = 0; i < count; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        hex += upperHexDigit(byte >> 4);
        hex += upperHexDigit(byte);
    }
    return hex;
}

// ---------------------------------------------------------------------------
// Expansion of <NAME>

namespace {

std::string environmentValue(const std::string& name)
{
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::string() : std::string(value);
}

// Every pass starts again at the first "<", so expanded values are expanded
// in turn.
template <class Lookup>
std::string expand(const std::string& source, Lookup lookup)
{
    std::string result = source;
    logLibraryRecord(9, "VornExpandString: expand = ", result);
    for (;;) {
        const std::string::size_type open = result.find('<');
        if (open == std::string::npos) {
            break;
        }
        const std::string::size_type close = result.find('>', open);
        if (close == std::string::npos) {
            break;
        }
        const std::string name = result.substr(open + 1, close - open - 1);
        logLibraryRecord(9, "VornExpandString: Lookup ", name);
        result.replace(open, close - open + 1, lookup(name));
    }
    logLibraryRecord(9, "VornExpandString: result = ", result);
    return result;
}

}  // namespace

std::string VornExpandString(const std::string& source)
{
    return expand(source, environmentValue);
}

std::string VornExpandString(const std::string& source, VornProperties<std::string>& properties)
{
    return expand(source, [&properties](const std::string& name) {
        std::string value;
        return properties.getPropertyValue(name, value) ? value : environmentValue(name);
    });
}

// ---------------------------------------------------------------------------
// Words

std::string VornExtractFirstString(const std::string& line, std::string& rest)
{
    if (!line.empty() && line[0] == '"') {
        const std::string tail = line.substr(1);
        const std::string::size_type quote = tail.find('"');
        if (quote == std::string::npos) {
            rest = tail;
            return tail;
        }
        rest = tail.substr(quote + 1);
        return tail.substr(0, quote);
    }
    const std::string::size_type separator = line.find_first_of(" \t");
    if (separator == std::string::npos) {
        rest.clear();
        return line;
    }
    rest = line.substr(separator + 1);
    return line.substr(0, separator);
}

void VornTokenizer(char* block, std::vector<std::string>& items)
{
    items.clear();
    if (block == nullptr) {
        return;
    }
    for (const char* item = block; *item != '\0'; item += std::strlen(item) + 1) {
        items.emplace_back(item);
    }
}

void VornTokenizer(const std::string& text, std::vector<std::string>& items)
{
    std::vector<char> block(text.c_str(), text.c_str() + std::strlen(text.c_str()));
    block.insert(block.end(), 2, '\0');
    VornTokenizer(block.data(), items);
}

void VornTokenizer(char* text, const std::string& delimiters, std::vector<std::string>& items)
{
    items.clear();
    if (text == nullptr) {
        return;
    }
    char* position = nullptr;
    for (char* item = strtok_r(text, delimiters.c_str(), &position); item != nullptr;
         item = strtok_r(nullptr, delimiters.c_str(), &position)) {
        items.emplace_back(item);
    }
}

void VornTokenizer(const std::string& text, const std::string& delimiters, std::vector<std::string>& items)
{
    std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    VornTokenizer(copy.data(), delimiters, items);
}

// ---------------------------------------------------------------------------
// Command lines

namespace {

// A command line being cut into words in place. Quotes leave the text as
// the walk passes them: everything before the write position is final, and
// the read position, never behind it, is the next character of the line yet
// to be looked at. Moving the rest of the line down for each quote instead
// made a line of quotes cost the square of its length.
class QuotedLine {
public:
    explicit QuotedLine(std::string text) : m_text(std::move(text)) {}

    // The next character to be looked at; NUL at the end.
    char next() const { return m_read < m_text.size() ? m_text[m_read] : '\0'; }
    std::size_t written() const { return m_written; }
    std::string wordFrom(std::size_t start) const { return m_text.substr(start, m_written - start); }

    void keep() { m_text[m_written++] = m_text[m_read++]; }
    void drop() { ++m_read; }

    // Keeps everything up to the next double quote, which is then the next
    // character; false at the end of the line.
    bool keepToQuote()
    {
        while (m_read < m_text.size() && m_text[m_read] != '"') {
            keep();
        }
        return m_read < m_text.size();
    }

    // Keeps everything up to the next blank outside quotes, dropping the
    // quotes on the way; false at the end of the line.
    bool keepToBlank()
    {
        while (m_read < m_text.size()) {
            if (m_text[m_read] == ' ') {
                return true;
            }
            if (m_text[m_read] != '"') {
                keep();
                continue;
            }
            drop();
            if (!keepToQuote()) {
                return false;
            }
            drop();
        }
        return false;
    }

private:
    std::string m_text;
    std::size_t m_written = 0;
    std::size_t m_read = 0;
};

void appendIfNotEmpty(std::string word, std::vector<std::string>& words)
{
    if (!word.empty()) {
        words.push_back(std::move(word));
    }
}

// Walks the line with the start of the current word. A quote steps the
// start on by one character, which skips the quote itself only when it
// opens the word.
void splitQuotedCommandLine(QuotedLine line, std::vector<std::string>& words)
{
    std::size_t start = 0;
    for (;;) {
        switch (line.next()) {
        case ' ':
            line.drop();
            appendIfNotEmpty(line.wordFrom(start), words);
            start = line.written();
            break;
        case '"':
            ++start;
            line.keep();
            if (!line.keepToQuote()) {
                appendIfNotEmpty(line.wordFrom(start), words);
                return;
            }
            line.drop();
            break;
        case '\0':
            appendIfNotEmpty(line.wordFrom(start), words);
            return;
        default: {
            const bool blankFollows = line.keepToBlank();
            words.push_back(line.wordFrom(start));
            if (!blankFollows) {
                return;
            }
            line.drop();
            start = line.written();
            break;
        }
        }
    }
}

}  // namespace

// The line counts up to its first NUL.
void VornParseCommandLine(const std::string& line, std::vector<std::string>& words)
{
    if (line.empty()) {
        return;
    }
    std::string text(line.c_str());
    words.clear();
    if (text.find('"') == std::string::npos) {
        VornTokenizer(text.data(), " ", words);
        return;
    }
    splitQuotedCommandLine(QuotedLine(std::move(text)), words);
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
