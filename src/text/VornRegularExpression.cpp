#include <vsupt/VornRegularExpression.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornException.h>
#include <vsupt/VornLogging.h>

#include "frame/ExceptionBorder.h"

namespace VornSupport {

template <class T>
VornRegularExpression<T>::VornRegularExpression() : m_patternLock(false)
{
}

template <class T>
void VornRegularExpression<T>::setPattern(const T& pattern)
{
    letOutOnly<VornException>([&] {
        std::string errorText;
        if (!setPatternImpl(pattern, errorText)) {
            throw VornException(errorText, 0);
        }
    });
}

template <class T>
bool VornRegularExpression<T>::setPatternImpl(const T& pattern, std::string& errorText)
{
    VornCriticalSection patternGuard(m_patternLock, true);
    VornCriticalSection tokenGuard(this->m_tokenLock, true);
    if (!this->compile(pattern, errorText)) {
        return false;
    }
    this->m_pattern = pattern;
    return true;
}

template <class T>
void VornRegularExpression<T>::print()
{
    if (!VornLogging::isAccessAllowed() || VornLogging::getInstance()->getLogLevel() != 9) {
        return;
    }
    VornCriticalSection guard(this->m_tokenLock, true);
    *VornLogging::getInstance() << setloglevel(9) << "regular expression: " << this->m_pattern << endrecord;
    for (auto& token : this->m_tokens) {
        print(token);
    }
}

template <class T>
unsigned long VornRegularExpression<T>::find(const T& text, unsigned long& length, unsigned long start)
{
    return VornRegularExpressionImplementation<T>::find(text, length, start);
}

template <class T>
unsigned long VornRegularExpression<T>::find(const T& text, unsigned long start)
{
    unsigned long length = 0;
    return find(text, length, start);
}

template <class T>
T VornRegularExpression<T>::match(const T& text, unsigned long start)
{
    unsigned long length = 0;
    const unsigned long index = find(text, length, start);
    return index == T::npos ? T() : text.substr(index, length);
}

template <class T>
T VornRegularExpression<T>::replace(const T& text, const T& replacement, Occurrence occurrence, unsigned long start)
{
    VornCriticalSection guard(m_patternLock, true);
    T result = text;
    unsigned long length = 0;
    for (;;) {
        const unsigned long index = find(result, length, start);
        if (index == T::npos) {
            break;
        }
        result.replace(index, length, replacement);
        // The inserted text is never searched again.
        start = index + replacement.size();
        if (occurrence != occurrenceAll) {
            break;
        }
    }
    return result;
}

template class VornRegularExpression<std::string>;
template class VornRegularExpression<std::wstring>;

}  // namespace VornSupport
