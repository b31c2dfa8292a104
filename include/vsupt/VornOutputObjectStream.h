/// @class VornSupport::VornOutputObjectStream
/// The writing side of an object stream.
///
/// Values are written in host byte order: scalars in their own size, text as
/// an unsigned 8-byte length followed by the characters without terminator
/// (1 byte each, or 4 for wide text). Narrow text ends at its first NUL, a
/// null pointer is the empty text, and wide text keeps its full size. Every
/// operator goes through write and ignores a failure: the value is then
/// lost. Nothing here throws or locks; a text takes two writes, so a stream
/// with several writers must be locked from outside.
#ifndef VSUPT_VORNOUTPUTOBJECTSTREAM_H
#define VSUPT_VORNOUTPUTOBJECTSTREAM_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectStream.h>

#include <string>

namespace VornSupport {

class VSUPT_API VornOutputObjectStream : public VornObjectStream {
public:
    /// Destroys the writing side.
    ~VornOutputObjectStream() override;

    /// Appends size times count bytes of source; returns how many, 0 on failure.
    virtual unsigned long write(const void* source, unsigned long size, unsigned long count) = 0;

    /// Writes a char in 1 byte.
    VornOutputObjectStream& operator<<(char value);
    /// Writes an unsigned char in 1 byte.
    VornOutputObjectStream& operator<<(unsigned char value);
    /// Writes an int in its own size.
    VornOutputObjectStream& operator<<(int value);
    /// Writes an unsigned int in its own size.
    VornOutputObjectStream& operator<<(unsigned int value);
    /// Writes a short in its own size.
    VornOutputObjectStream& operator<<(short value);
    /// Writes an unsigned short in its own size.
    VornOutputObjectStream& operator<<(unsigned short value);
    /// Writes a long in its own size.
    VornOutputObjectStream& operator<<(long value);
    /// Writes an unsigned long in its own size.
    VornOutputObjectStream& operator<<(unsigned long value);
    /// Writes a float in its own size.
    VornOutputObjectStream& operator<<(float value);
    /// Writes a double in its own size.
    VornOutputObjectStream& operator<<(double value);
    /// Writes the text up to its first NUL; a null pointer is the empty text.
    VornOutputObjectStream& operator<<(const char* text);
    /// Writes the text up to its first NUL.
    VornOutputObjectStream& operator<<(const std::string& text);
    /// Writes the wide text at its full size, NULs included.
    VornOutputObjectStream& operator<<(const std::wstring& text);
};

}  // namespace VornSupport

#endif
