#include <vsupt/VornInputObjectStream.h>

#include <cstdint>
#include <vector>

namespace VornSupport {

static_assert(sizeof(wchar_t) == 4, "wide text travels as 4 bytes per character");

namespace {

template <class T>
VornInputObjectStream& readScalar(VornInputObjectStream& stream, T& value)
{
    stream.read(&value, sizeof value, 1);
    return stream;
}

// The length in front of a text; a short read leaves it 0.
std::int16_t readTextLength(VornInputObjectStream& stream)
{
    std::int16_t length = 0;
    stream.read(&length, sizeof length, 1);
    return length;
}

}  // namespace

VornInputObjectStream::~VornInputObjectStream() = default;

VornInputObjectStream& VornInputObjectStream::operator>>(char& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(unsigned char& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(int& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(unsigned int& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(short& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(unsigned short& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(long& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(unsigned long& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(float& value) { return readScalar(*this, value); }
VornInputObjectStream& VornInputObjectStream::operator>>(double& value) { return readScalar(*this, value); }

// A negative length has no text to give, like 0. The copy starts zeroed, so
// a short read yields the text that did arrive.
VornInputObjectStream& VornInputObjectStream::operator>>(char*& text)
{
    const std::int16_t length = readTextLength(*this);
    if (length <= 0) {
        return *this;
    }
    char* copy = new char[length + 1]();
    read(copy, 1, static_cast<unsigned long>(length));
    text = copy;
    return *this;
}

VornInputObjectStream& VornInputObjectStream::operator>>(std::string& text)
{
    char* copy = nullptr;
    *this >> copy;
    if (copy != nullptr) {
        text = copy;
        delete[] copy;
    }
    return *this;
}

VornInputObjectStream& VornInputObjectStream::operator>>(std::wstring& text)
{
    const std::int16_t length = readTextLength(*this);
    if (length <= 0) {
        return *this;
    }
    std::vector<wchar_t> copy(static_cast<std::size_t>(length) + 4, L'\0');
    read(copy.data(), sizeof(wchar_t), static_cast<unsigned long>(length));
    text = copy.data();
    return *this;
}

}  // namespace VornSupport
