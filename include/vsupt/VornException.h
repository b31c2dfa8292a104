/// @class VornSupport::VornException
/// Root of the library's exceptions.
///
/// A VornException carries a wide text, an integer code for the program's own
/// use (0 for everything the library throws) and a stack of wide messages
/// that the layers of a program add to while the exception travels upwards;
/// getFormattedMessages prints them newest first. The constructors that take
/// a text push it as the first message. Text given narrow is widened, and
/// getText narrowed, with the library's default locale.
///
/// It is not derived from std::exception. Throw by value, catch by reference.
/// An exception object belongs to the thread handling it: nothing here locks.
#ifndef VSUPT_VORNEXCEPTION_H
#define VSUPT_VORNEXCEPTION_H

#include <vsupt/VsuptExport.h>

#include <deque>
#include <string>

namespace VornSupport {

class VSUPT_API VornException {
public:
    VornException();
    /// An exception with no text and the given code.
    explicit VornException(int code);
    /// An exception with a narrow text, widened, pushed as its first message.
    VornException(const std::string& text, int code);
    /// An exception with a wide text, pushed as its first message.
    VornException(const std::wstring& text, int code);
    /// Copies the text, the code and the messages.
    VornException(const VornException& other);
    /// Copies the text, the code and the messages.
    VornException& operator=(const VornException& other);
    virtual ~VornException();

    /// A failure of the conversion is reported in place of the text.
    virtual std::string getText() const;
    /// The text as it was given, wide.
    virtual const std::wstring& getUText() const;
    /// Replaces the text; the message stack keeps the first one.
    virtual void setText(const std::string& text);
    /// Replaces the text; the message stack keeps the first one.
    virtual void setText(const std::wstring& text);
    /// The code: 0 for everything the library throws.
    virtual int getCode() const;
    /// Replaces the code.
    virtual void setCode(int code);
    /// Adds a message at the top of the stack.
    virtual void pushMessage(const std::wstring& message);
    /// Removes and returns the newest message; an empty string, with nothing
    /// changed, when the stack is empty.
    virtual std::wstring popMessage();
    /// The newest message stands at the back.
    virtual const std::deque<std::wstring>& getCallStack() const;
    /// The messages one to a line, newest first, with no trailing line feed.
    virtual std::wstring getFormattedMessages() const;

protected:
    /// The text, wide.
    std::wstring m_text;
    /// The code.
    int m_code;
    /// The messages, the newest at the back.
    std::deque<std::wstring> m_callStack;
};

}  // namespace VornSupport

#endif
