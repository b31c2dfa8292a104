// The reading side of an object stream.
//
// Values are read in host byte order: scalars in their own size, text as a
// signed 2-byte length followed by that many characters (1 byte each, or 4
// for wide text). The output side writes an 8-byte length, so text written
// by a VornOutputObjectStream does not read back as the same text: the
// input side takes what a 2-byte writer produces. A text of length 0 (or a
// negative length) leaves the target as it was. Every operator goes through
// read and ignores a short read: the part of the target that was not
// supplied keeps its old bytes. Nothing here throws or locks.
#ifndef VSUPT_VORNINPUTOBJECTSTREAM_H
#define VSUPT_VORNINPUTOBJECTSTREAM_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectStream.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornInputObjectStream : public VornObjectStream {
public:
    ~VornInputObjectStream() override;

    // Moves up to size times count bytes into target; returns how many.
    virtual unsigned long read(void* target, unsigned long size, unsigned long count) = 0;

    VornInputObjectStream& operator>>(char& value);
    VornInputObjectStream& operator>>(unsigned char& value);
    VornInputObjectStream& operator>>(int& value);
    VornInputObjectStream& operator>>(unsigned int& value);
    VornInputObjectStream& operator>>(short& value);
    VornInputObjectStream& operator>>(unsigned short& value);
    VornInputObjectStream& operator>>(long& value);
    VornInputObjectStream& operator>>(unsigned long& value);
    VornInputObjectStream& operator>>(float& value);
    VornInputObjectStream& operator>>(double& value);
    // Stores a NUL-terminated copy made with new[]; the caller releases it
    // with delete[].
    VornInputObjectStream& operator>>(char*& text);
    // The text up to its first NUL.
    VornInputObjectStream& operator>>(std::string& text);
    VornInputObjectStream& operator>>(std::wstring& text);
};

}  // namespace VornSupport

#endif
