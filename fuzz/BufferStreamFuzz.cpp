// A buffer stream received from an arbitrary peer block and read back as
// every type until it is used up; the payload written back out gives the
// same block, and a stream read halfway shows the unread half at byte 8, as
// does a copy of it.
#include <vsupt/VornBufferStream.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace VornSupport;

namespace {

VornBufferStream received(const std::uint8_t* data, std::size_t size)
{
    return VornBufferStream(const_cast<std::uint8_t*>(data), static_cast<unsigned int>(size));
}

template <class T>
void readAll(const std::uint8_t* data, std::size_t size)
{
    VornBufferStream stream = received(data, size);
    while (stream.size() > 0) {
        T value{};
        stream >> value;
    }
}

void readAllAsRawText(const std::uint8_t* data, std::size_t size)
{
    VornBufferStream stream = received(data, size);
    while (stream.size() > 0) {
        char* text = nullptr;
        stream >> text;
        delete[] text;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    readAll<char>(data, size);
    readAll<unsigned char>(data, size);
    readAll<short>(data, size);
    readAll<unsigned short>(data, size);
    readAll<int>(data, size);
    readAll<unsigned int>(data, size);
    readAll<long>(data, size);
    readAll<unsigned long>(data, size);
    readAll<float>(data, size);
    readAll<double>(data, size);
    readAll<std::string>(data, size);
    readAll<std::wstring>(data, size);
    readAllAsRawText(data, size);

    VornBufferStream stream = received(data, size);
    VornBufferStream copy;
    const unsigned long payload = stream.size();
    if (size >= 8 && payload != size - 8) std::abort();
    if (payload > 0) copy.write(static_cast<char*>(stream.buffer()) + 8, 1, payload);
    if (copy.size() != payload || std::memcmp(copy.buffer(), stream.buffer(), payload + 8) != 0) std::abort();

    VornBufferStream half = received(data, size);
    std::vector<char> front(payload / 2 + 1);
    const unsigned long taken = half.read(front.data(), 1, payload / 2);
    const unsigned long rest = payload - taken;
    VornBufferStream halfCopy(half);
    if (half.size() != rest || halfCopy.size() != rest) std::abort();
    if (rest > 0 && std::memcmp(static_cast<char*>(halfCopy.buffer()) + 8, data + 8 + taken, rest) != 0) std::abort();
    if (rest > 0 && std::memcmp(static_cast<char*>(half.buffer()) + 8, data + 8 + taken, rest) != 0) std::abort();
    return 0;
}
