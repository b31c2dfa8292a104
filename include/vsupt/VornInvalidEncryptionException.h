/// @class VornSupport::VornInvalidEncryptionException
/// Reports an encryption object used without a proper mode or key.
///
/// The text is "VornInvalidEncryptionException - " followed by the text given
/// to the constructor; the code is 0. Like every VornException it belongs to
/// the thread that handles it and takes no lock.
#ifndef VSUPT_VORNINVALIDENCRYPTIONEXCEPTION_H
#define VSUPT_VORNINVALIDENCRYPTIONEXCEPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornInvalidEncryptionException : public VornException {
public:
    /// An exception with text, code 0.
    explicit VornInvalidEncryptionException(const std::string& text);
    ~VornInvalidEncryptionException() override;
};

}  // namespace VornSupport

#endif
