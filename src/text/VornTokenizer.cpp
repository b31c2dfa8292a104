#include <vsupt/VornTokenizer.h>

template <class T>
VornTokenizer<T>::VornTokenizer(const T& text, const T& delimiter, bool wholeDelimiter)
    : m_text(text), m_delimiter(delimiter), m_position(0), m_wholeDelimiter(wholeDelimiter)
{
}

template <class T>
bool VornTokenizer<T>::hasMoreTokens() const
{
    return !m_text.empty() && !m_delimiter.empty() && m_position != T::npos;
}

template <class T>
T VornTokenizer<T>::next()
{
    if (m_position == T::npos) {
        return T();
    }
    const auto hit = m_wholeDelimiter ? m_text.find(m_delimiter, m_position)
                                      : m_text.find_first_of(m_delimiter, m_position);
    if (hit == T::npos) {
        T piece = m_text.substr(m_position);
        m_position = T::npos;
        return piece;
    }
    T piece = m_text.substr(m_position, hit - m_position);
    m_position = hit + (m_wholeDelimiter ? m_delimiter.size() : 1);
    return piece;
}

template class VornTokenizer<std::string>;
