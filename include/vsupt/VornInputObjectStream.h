/// @class VornSupport::VornInputObjectStream
/// The reading side of an object stream.
///
/// Values are read in host byte order: scalars in their own size, text as a
/// signed 2-byte length followed by that many characters (1 byte each, or 4
/// for wide text). The output side writes an 8-byte length, so text written
/// by a VornOutputObjectStream does not read back as the same text: the
/// input side takes what a 2-byte writer produces. A text of length 0 (or a
/// negative length) leaves the target as it was. Every operator goes through
/// read and ignores a short read: the part of the target that was not
/// supplied keeps its old bytes. Nothing here throws or locks.
#ifndef VSUPT_VORNINPUTOBJECTSTREAM_H
#define VSUPT_VORNINPUTOBJECTSTREAM_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectStream.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornInputObjectStream : public VornObjectStream {
public:
    /// Destroys the reading side.
    ~VornInputObjectStream() override;

    /// Moves up to size times count bytes into target; returns how many.
    virtual unsigned long read(void* target, unsigned long size, unsigned long count) = 0;

    /// Reads a char in 1 byte.
    VornInputObjectStream& operator>>(char& value);
    /// Reads an unsigned char in 1 byte.
    VornInputObjectStream& operator>>(unsigned char& value);
    /// Reads an int in its own size.
    VornInputObjectStream& operator>>(int& value);
    /// Reads an unsigned int in its own size.
    VornInputObjectStream& operator>>(unsigned int& value);
    /// Reads a short in its own size.
    VornInputObjectStream& operator>>(short& value);
    /// Reads an unsigned short in its own size.
    VornInputObjectStream& operator>>(unsigned short& value);
    /// Reads a long in its own size.
    VornInputObjectStream& operator>>(long& value);
    /// Reads an unsigned long in its own size.
    VornInputObjectStream& operator>>(unsigned long& value);
    /// Reads a float in its own size.
    VornInputObjectStream& operator>>(float& value);
    /// Reads a double in its own size.
    VornInputObjectStream& operator>>(double& value);
    /// Stores a NUL-terminated copy made with new[]; the caller releases it
    /// with delete[].
    VornInputObjectStream& operator>>(char*& text);
    /// The text up to its first NUL.
    VornInputObjectStream& operator>>(std::string& text);
    /// The wide text up to its first NUL.
    VornInputObjectStream& operator>>(std::wstring& text);
};

}  // namespace VornSupport

#endif
