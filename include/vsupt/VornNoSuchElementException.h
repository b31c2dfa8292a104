/// @class VornSupport::VornNoSuchElementException
/// Reports a look-up of an element that does not exist, such as a named lock
/// the lock factory does not hold.
///
/// The text is "VornNoSuchElementException - " followed by the text given to
/// the constructor; the code is 0. Like every VornException it belongs to the
/// thread that handles it and takes no lock.
#ifndef VSUPT_VORNNOSUCHELEMENTEXCEPTION_H
#define VSUPT_VORNNOSUCHELEMENTEXCEPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornNoSuchElementException : public VornException {
public:
    /// An exception with text, code 0.
    explicit VornNoSuchElementException(const std::string& text);
    ~VornNoSuchElementException() override;
};

}  // namespace VornSupport

#endif
