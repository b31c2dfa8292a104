/// @class VornSupport::VornMissingMessageException
/// Reports a message that a message set does not hold: VornMessageSet throws
/// it with the key that was asked for.
///
/// The text is "VornMissingMessageException - Missing " followed by the text
/// given to the constructor; the code is 0. Like every VornException it
/// belongs to the thread that handles it and takes no lock.
#ifndef VSUPT_VORNMISSINGMESSAGEEXCEPTION_H
#define VSUPT_VORNMISSINGMESSAGEEXCEPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornMissingMessageException : public VornException {
public:
    /// An exception with text, code 0.
    explicit VornMissingMessageException(const std::string& text);
    ~VornMissingMessageException() override;
};

}  // namespace VornSupport

#endif
