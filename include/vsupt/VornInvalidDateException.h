/// @class VornSupport::VornInvalidDateException
/// Reports a date or time that does not make a valid date and time value.
///
/// The text is "VornInvalidDateException - " followed by the text given to the
/// constructor; the code is 0. Like every VornException it belongs to the
/// thread that handles it and takes no lock.
#ifndef VSUPT_VORNINVALIDDATEEXCEPTION_H
#define VSUPT_VORNINVALIDDATEEXCEPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornInvalidDateException : public VornException {
public:
    /// An exception with text, code 0.
    explicit VornInvalidDateException(const std::string& text);
    ~VornInvalidDateException() override;
};

}  // namespace VornSupport

#endif
