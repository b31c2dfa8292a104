#include <vsupt/VornException.h>
#include <vsupt/VornInvalidDateException.h>
#include <vsupt/VornInvalidEncryptionException.h>
#include <vsupt/VornKeyDataNotSupportedException.h>
#include <vsupt/VornLocaleFactory.h>
#include <vsupt/VornMissingMessageException.h>
#include <vsupt/VornNoSuchElementException.h>
#include <vsupt/VornPropertyNotFound.h>
#include <vsupt/VornStringUtilities.h>

namespace VornSupport {

namespace {

std::wstring widenText(const std::string& text)
{
    return VornStringUtilities::widen(text, VornLocaleFactory::getDefaultLocale(true));
}

std::string narrowText(const std::wstring& text)
{
    return VornStringUtilities::narrow(text, VornLocaleFactory::getDefaultLocale(true));
}

}  // namespace

// ---------------------------------------------------------------------------
// VornException

VornException::VornException() : m_code(0) {}

VornException::VornException(int code) : m_code(code) {}

VornException::VornException(const std::string& text, int code) : m_text(widenText(text)), m_code(code)
{
    m_callStack.push_back(m_text);
}

VornException::VornException(const std::wstring& text, int code) : m_text(text), m_code(code)
{
    m_callStack.push_back(m_text);
}

VornException::VornException(const VornException& other) = default;

VornException& VornException::operator=(const VornException& other)
{
    if (this != &other) {
        m_text = other.m_text;
        m_code = other.m_code;
        m_callStack = other.m_callStack;
    }
    return *this;
}

VornException::~VornException() = default;

std::string VornException::getText() const
{
    try {
        return narrowText(m_text);
    } catch (VornException& conversionFailure) {
        return conversionFailure.getText();
    }
}

const std::wstring& VornException::getUText() const
{
    return m_text;
}

void VornException::setText(const std::string& text)
{
    m_text = widenText(text);
}

void VornException::setText(const std::wstring& text)
{
    m_text = text;
}

int VornException::getCode() const
{
    return m_code;
}

void VornException::setCode(int code)
{
    m_code = code;
}

void VornException::pushMessage(const std::wstring& message)
{
    m_callStack.push_back(message);
}

std::wstring VornException::popMessage()
{
    if (m_callStack.empty()) {
        return std::wstring();
    }
    std::wstring message = m_callStack.back();
    m_callStack.pop_back();
    return message;
}

const std::deque<std::wstring>& VornException::getCallStack() const
{
    return m_callStack;
}

std::wstring VornException::getFormattedMessages() const
{
    std::wstring result;
    for (auto message = m_callStack.rbegin(); message != m_callStack.rend(); ++message) {
        if (!result.empty()) {
            result += L'\n';
        }
        result += *message;
    }
    return result;
}

// ---------------------------------------------------------------------------
// The derived classes

VornKeyDataNotSupportedException::VornKeyDataNotSupportedException(const std::string& text)
    : VornException("VornKeyDataNotSupportedException - " + text, 0)
{
}

VornKeyDataNotSupportedException::~VornKeyDataNotSupportedException() = default;

VornNoSuchElementException::VornNoSuchElementException(const std::string& text)
    : VornException("VornNoSuchElementException - " + text, 0)
{
}

VornNoSuchElementException::~VornNoSuchElementException() = default;

VornInvalidDateException::VornInvalidDateException(const std::string& text)
    : VornException("VornInvalidDateException - " + text, 0)
{
}

VornInvalidDateException::~VornInvalidDateException() = default;

VornInvalidEncryptionException::VornInvalidEncryptionException(const std::string& text)
    : VornException("VornInvalidEncryptionException - " + text, 0)
{
}

VornInvalidEncryptionException::~VornInvalidEncryptionException() = default;

VornMissingMessageException::VornMissingMessageException(const std::string& text)
    : VornException("VornMissingMessageException - Missing " + text, 0)
{
}

VornMissingMessageException::~VornMissingMessageException() = default;

// ---------------------------------------------------------------------------
// VornPropertyNotFound

VornPropertyNotFound::VornPropertyNotFound() = default;

VornPropertyNotFound::VornPropertyNotFound(const std::string& name)
    : VornException("Property not found: " + name, 0)
{
}

VornPropertyNotFound::VornPropertyNotFound(const ci_string& name)
    : VornPropertyNotFound(std::string(name.c_str()))
{
}

// The whole text is built wide and narrowed, so the name reaches the narrow
// constructor like any other.
VornPropertyNotFound::VornPropertyNotFound(const std::wstring& name)
    : VornException(narrowText(L"Property not found: " + name), 0)
{
}

VornPropertyNotFound::VornPropertyNotFound(const ci_wstring& name)
    : VornPropertyNotFound(std::wstring(name.c_str()))
{
}

VornPropertyNotFound::VornPropertyNotFound(const VornPropertyNotFound& other) = default;

VornPropertyNotFound& VornPropertyNotFound::operator=(const VornPropertyNotFound& other) = default;

VornPropertyNotFound::~VornPropertyNotFound() = default;

}  // namespace VornSupport
