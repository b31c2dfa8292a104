#include <vsupt/VornCmdLineTokenizer.h>

#include <algorithm>

namespace VornSupport {

namespace {

// Whether a quote character stands from first up to and including last. A
// word can only be quoted when a quote comes no later than the separator
// that would end it, so the search stops there: looking through the whole
// rest of the text for every word made splitting cost the square of the
// text's length.
template <class T>
bool quoteWithin(const T& text, typename T::size_type first, typename T::size_type last, const T& quotes)
{
    const auto end = text.begin() + last + 1;
    return std::find_first_of(text.begin() + first, end, quotes.begin(), quotes.end()) != end;
}

}  // namespace

template <class T>
VornCmdLineTokenizer<T>::VornCmdLineTokenizer(const T& text) : m_text(text), m_position(0)
{
}

template <class T>
void VornCmdLineTokenizer<T>::setSeparators(const T& separators)
{
    m_separators = separators;
}

template <class T>
void VornCmdLineTokenizer<T>::setQuotes(const T& quotes)
{
    m_quotes = quotes;
}

template <class T>
bool VornCmdLineTokenizer<T>::hasMoreTokens() const
{
    return m_position != T::npos && !m_text.empty() && !m_separators.empty();
}

template <class T>
T VornCmdLineTokenizer<T>::next()
{
    if (m_position == T::npos) {
        return T();
    }
    const auto separator = m_text.find_first_of(m_separators, m_position);
    if (separator == T::npos) {
        T word = m_text.substr(m_position);
        m_position = T::npos;
        return word;
    }
    if (!quoteWithin(m_text, m_position, separator, m_quotes)) {
        T word = m_text.substr(m_position, separator - m_position);
        m_position = m_text.find_first_not_of(m_separators, separator);
        return word;
    }
    return quotedWord();
}

// Builds the word character by character from the current position up to a
// separator outside quotes.
template <class T>
T VornCmdLineTokenizer<T>::quotedWord()
{
    using CharType = typename T::value_type;
    T word;
    bool quoted = false;
    CharType quote = CharType();
    typename T::size_type i = m_position;
    for (; i < m_text.size(); ++i) {
        const CharType c = m_text[i];
        if (!quoted) {
            if (m_quotes.find(c) != T::npos) {
                quoted = true;
                quote = c;
            } else if (m_separators.find(c) != T::npos) {
                break;
            } else {
                word += c;
            }
        } else if (c != quote) {
            word += c;
        } else if (i + 1 < m_text.size() && m_text[i + 1] == quote) {
            word += c;
            ++i;
        } else {
            quoted = false;
        }
    }
    m_position = m_text.find_first_not_of(m_separators, i + 1);
    return word;
}

template class VornCmdLineTokenizer<std::string>;

}  // namespace VornSupport
