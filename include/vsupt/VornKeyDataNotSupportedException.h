/// @class VornSupport::VornKeyDataNotSupportedException
/// Reports key data of a kind that is not supported. The library does not
/// throw it itself; it is there for the programs that use it.
///
/// The text is "VornKeyDataNotSupportedException - " followed by the text
/// given to the constructor; the code is 0. Like every VornException it
/// belongs to the thread that handles it and takes no lock.
#ifndef VSUPT_VORNKEYDATANOTSUPPORTEDEXCEPTION_H
#define VSUPT_VORNKEYDATANOTSUPPORTEDEXCEPTION_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornException.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornKeyDataNotSupportedException : public VornException {
public:
    /// An exception with text, code 0.
    explicit VornKeyDataNotSupportedException(const std::string& text);
    ~VornKeyDataNotSupportedException() override;
};

}  // namespace VornSupport

#endif
