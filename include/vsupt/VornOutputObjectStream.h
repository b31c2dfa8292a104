// The writing side of an object stream.
//
// Values are written in host byte order: scalars in their own size, text as
// an unsigned 8-byte length followed by the characters without terminator
// (1 byte each, or 4 for wide text). Narrow text ends at its first NUL, a
// null pointer is the empty text, and wide text keeps its full size. Every
// operator goes through write and ignores a failure: the value is then
// lost. Nothing here throws or locks; a text takes two writes, so a stream
// with several writers must be locked from outside.
#ifndef VSUPT_VORNOUTPUTOBJECTSTREAM_H
#define VSUPT_VORNOUTPUTOBJECTSTREAM_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectStream.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornOutputObjectStream : public VornObjectStream {
public:
    ~VornOutputObjectStream() override;

    // Appends size times count bytes of source; returns how many, 0 on failure.
    virtual unsigned long write(const void* source, unsigned long size, unsigned long count) = 0;

    VornOutputObjectStream& operator<<(char value);
    VornOutputObjectStream& operator<<(unsigned char value);
    VornOutputObjectStream& operator<<(int value);
    VornOutputObjectStream& operator<<(unsigned int value);
    VornOutputObjectStream& operator<<(short value);
    VornOutputObjectStream& operator<<(unsigned short value);
    VornOutputObjectStream& operator<<(long value);
    VornOutputObjectStream& operator<<(unsigned long value);
    VornOutputObjectStream& operator<<(float value);
    VornOutputObjectStream& operator<<(double value);
    VornOutputObjectStream& operator<<(const char* text);
    VornOutputObjectStream& operator<<(const std::string& text);
    VornOutputObjectStream& operator<<(const std::wstring& text);
};

}  // namespace VornSupport

#endif
