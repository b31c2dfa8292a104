#include <vsupt/VornObjectBase.h>
#include <vsupt/VornCriticalSection.h>

#include <cctype>
#include <cstdlib>
#include <typeinfo>
#include <vector>

namespace VornSupport {

VornObjectBase::VornObjectBase() : m_nRefCount(0) {}

VornObjectBase::VornObjectBase(const VornObjectBase&) : m_nRefCount(0) {}

VornObjectBase& VornObjectBase::operator=(const VornObjectBase& other)
{
    if (this != &other) {
        m_nRefCount.store(0, std::memory_order_relaxed);
    }
    return *this;
}

VornObjectBase::~VornObjectBase() = default;

// A thread still running while the library stops finds the global section
// gone, and counts on its own.
long VornObjectBase::addRef()
{
    if (g_pCriticalSection == nullptr) {
        return m_nRefCount.fetch_add(1) + 1;
    }
    VornCriticalSection guard(*g_pCriticalSection, true);
    const long count = m_nRefCount.load(std::memory_order_relaxed) + 1;
    m_nRefCount.store(count, std::memory_order_relaxed);
    return count;
}

long VornObjectBase::release()
{
    if (g_pCriticalSection == nullptr) {
        return releaseCounted(m_nRefCount.fetch_sub(1) - 1);
    }
    VornCriticalSection guard(*g_pCriticalSection, true);
    const long count = m_nRefCount.load(std::memory_order_relaxed) - 1;
    m_nRefCount.store(count, std::memory_order_relaxed);
    // The destructor runs outside the global section.
    guard.unlock();
    return releaseCounted(count);
}

long VornObjectBase::releaseCounted(long count)
{
    if (count == 0) {
        delete this;
    }
    return count;
}

long VornObjectBase::refCount() const
{
    return m_nRefCount.load(std::memory_order_relaxed);
}

bool VornObjectBase::isA(const std::string& name) const
{
    return getClassName() == name;
}

std::string VornObjectBase::getClassName() const
{
    return normalizeClassName(typeid(*this).name());
}

namespace {

// The character at an index, or NUL past the end, so that the scans below
// never read outside the name.
char charAt(const std::string& text, std::string::size_type pos)
{
    return pos < text.size() ? text[pos] : '\0';
}

bool isDigitAt(const std::string& text, std::string::size_type pos)
{
    return std::isdigit(static_cast<unsigned char>(charAt(text, pos))) != 0;
}

// Reads the decimal number at pos and moves pos past its digits.
long readNumber(const std::string& text, std::string::size_type& pos)
{
    const std::string::size_type start = pos;
    while (isDigitAt(text, pos)) {
        ++pos;
    }
    return std::strtol(text.substr(start, pos - start).c_str(), nullptr, 10);
}

}  // namespace

// Knows the older qualified form (Q, a part count, then length-prefixed
// parts) and the plain length-prefixed form. Anything else loses its first
// character and the length that follows it, which is what a name inside a
// namespace looks like under the current encoding.
std::string VornObjectBase::normalizeClassName(const std::string& typeName)
{
    std::vector<std::string> parts;
    std::string::size_type pos = 1;
    long count = 0;
    if (charAt(typeName, 0) == 'Q') {
        if (charAt(typeName, 1) == '_') {
            pos = 2;
            count = readNumber(typeName, pos);
            ++pos;
        } else if (isDigitAt(typeName, 2)) {
            count = charAt(typeName, 1) - '0';
            pos = 2;
        }
    }
    for (long i = 1; i < count; ++i) {
        const long length = readNumber(typeName, pos);
        parts.push_back(typeName.substr(pos, length));
        pos += length;
    }
    while (isDigitAt(typeName, pos)) {
        ++pos;
    }
    parts.push_back(typeName.substr(pos));

    std::string result;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            result += "::";
        }
        result += parts[i];
    }
    return result;
}

}  // namespace VornSupport
