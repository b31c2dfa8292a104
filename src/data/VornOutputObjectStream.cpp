#include <vsupt/VornOutputObjectStream.h>

#include <cstdint>
#include <cstring>

namespace VornSupport {

namespace {

template <class T>
VornOutputObjectStream& writeScalar(VornOutputObjectStream& stream, T value)
{
    stream.write(&value, sizeof value, 1);
    return stream;
}

// The length prefix, and the characters only when there are any.
VornOutputObjectStream& writeText(VornOutputObjectStream& stream, const void* characters, std::uint64_t length,
                                  unsigned long characterSize)
{
    stream.write(&length, sizeof length, 1);
    if (length > 0) {
        stream.write(characters, characterSize, length);
    }
    return stream;
}

}  // namespace

VornOutputObjectStream::~VornOutputObjectStream() = default;

VornOutputObjectStream& VornOutputObjectStream::operator<<(char value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(unsigned char value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(int value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(unsigned int value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(short value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(unsigned short value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(long value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(unsigned long value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(float value) { return writeScalar(*this, value); }
VornOutputObjectStream& VornOutputObjectStream::operator<<(double value) { return writeScalar(*this, value); }

VornOutputObjectStream& VornOutputObjectStream::operator<<(const char* text)
{
    return writeText(*this, text, text != nullptr ? std::strlen(text) : 0, 1);
}

VornOutputObjectStream& VornOutputObjectStream::operator<<(const std::string& text)
{
    return *this << text.c_str();
}

VornOutputObjectStream& VornOutputObjectStream::operator<<(const std::wstring& text)
{
    return writeText(*this, text.data(), text.size(), sizeof(wchar_t));
}

}  // namespace VornSupport
