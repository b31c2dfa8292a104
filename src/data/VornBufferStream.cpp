#include <vsupt/VornBufferStream.h>
#include <vsupt/VornCriticalSection.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace VornSupport {

namespace {

const std::uint32_t kHeaderSize = 8;
const std::uint32_t kDefaultGrowBy = 512;

std::uint32_t growthStep(unsigned long growBy)
{
    const auto step = static_cast<std::uint32_t>(growBy);
    return step == 0 ? kDefaultGrowBy : step;
}

// size times count, or the largest number when the product overflows: no
// stream holds that much anyway.
std::uint64_t byteCount(unsigned long size, unsigned long count)
{
    unsigned long bytes;
    return __builtin_mul_overflow(size, count, &bytes) ? std::numeric_limits<std::uint64_t>::max() : bytes;
}

}  // namespace

VornBufferStream::VornBufferStream() : VornBufferStream(kDefaultGrowBy) {}

VornBufferStream::VornBufferStream(unsigned long growBy)
    : m_buffer(nullptr),
      m_readOffset(kHeaderSize),
      m_writeOffset(kHeaderSize),
      m_growBy(growthStep(growBy)),
      m_capacity(0)
{
}

VornBufferStream::VornBufferStream(void* data, unsigned int size) : VornBufferStream(size)
{
    if (size < kHeaderSize) {
        return;
    }
    m_buffer = static_cast<char*>(std::malloc(size));
    if (m_buffer != nullptr) {
        std::memcpy(m_buffer, data, size);
        m_writeOffset = size;
        m_capacity = size;
    }
}

VornBufferStream::VornBufferStream(const VornBufferStream& other)
    : VornInputObjectStream(other), VornOutputObjectStream(other), m_buffer(nullptr)
{
    copyBlockOf(other);
}

VornBufferStream& VornBufferStream::operator=(const VornBufferStream& other)
{
    if (this != &other) {
        std::free(m_buffer);
        copyBlockOf(other);
    }
    return *this;
}

VornBufferStream::~VornBufferStream()
{
    std::free(m_buffer);
}

// The copy has a block of the source's capacity, with the unread payload
// at byte 8 as the source would show it. Without memory for it, the copy is
// an empty stream.
void VornBufferStream::copyBlockOf(const VornBufferStream& other)
{
    m_readOffset = kHeaderSize;
    m_writeOffset = kHeaderSize + other.unreadBytes();
    m_growBy = other.m_growBy;
    m_capacity = 0;
    m_buffer = nullptr;
    if (other.m_buffer == nullptr) {
        return;
    }
    m_buffer = static_cast<char*>(std::malloc(other.m_capacity));
    if (m_buffer == nullptr) {
        m_writeOffset = m_readOffset;
        return;
    }
    std::memcpy(m_buffer, other.m_buffer, kHeaderSize);
    std::memcpy(m_buffer + kHeaderSize, other.m_buffer + other.m_readOffset, other.unreadBytes());
    m_capacity = other.m_capacity;
}

void VornBufferStream::reset()
{
    m_readOffset = kHeaderSize;
    m_writeOffset = kHeaderSize;
}

// A read offset above the write offset can only be left by a reset racing a
// read; it counts as an empty stream.
std::uint32_t VornBufferStream::unreadBytes() const
{
    return m_writeOffset > m_readOffset ? m_writeOffset - m_readOffset : 0;
}

unsigned long VornBufferStream::size() const
{
    return unreadBytes();
}

void* VornBufferStream::buffer() const
{
    VornCriticalSection guard(m_lock, true);
    if (m_buffer == nullptr) {
        const std::uint32_t capacity = std::max(m_growBy, kHeaderSize);
        m_buffer = static_cast<char*>(std::malloc(capacity));
        if (m_buffer == nullptr) {
            return nullptr;
        }
        m_capacity = capacity;
    }
    moveUnreadToFront();
    const std::uint64_t payload = unreadBytes();
    std::memcpy(m_buffer, &payload, sizeof payload);
    return m_buffer;
}

void VornBufferStream::moveUnreadToFront() const
{
    if (m_readOffset == kHeaderSize) {
        return;
    }
    const std::uint32_t unread = unreadBytes();
    if (unread > 0) {
        std::memmove(m_buffer + kHeaderSize, m_buffer + m_readOffset, unread);
    }
    m_readOffset = kHeaderSize;
    m_writeOffset = kHeaderSize + unread;
}

// Uses the room the reads have freed before asking whether to grow, so that
// the growth rule always sees the payload at byte 8.
bool VornBufferStream::makeRoom(std::uint64_t bytes)
{
    if (m_writeOffset + bytes <= m_capacity) {
        return true;
    }
    moveUnreadToFront();
    return grow(bytes);
}

// Linear growth in whole steps: enough steps for the bytes to come, plus
// one. A first block must hold the header as well, which the steps for the
// bytes alone may not cover.
bool VornBufferStream::grow(std::uint64_t bytes)
{
    const std::uint64_t needed = bytes + m_writeOffset;
    if (m_capacity >= needed) {
        return true;
    }
    std::uint64_t growBy = (bytes / m_growBy + 1) * m_growBy;
    while (m_capacity + growBy < needed) {
        growBy += m_growBy;
    }
    const std::uint64_t capacity = m_capacity + growBy;
    if (capacity > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    void* block = std::realloc(m_buffer, capacity);
    if (block == nullptr) {
        return false;
    }
    m_buffer = static_cast<char*>(block);
    m_capacity = static_cast<std::uint32_t>(capacity);
    return true;
}

unsigned long VornBufferStream::write(const void* source, unsigned long size, unsigned long count)
{
    VornCriticalSection guard(m_lock, true);
    const std::uint64_t bytes = byteCount(size, count);
    if (bytes > std::numeric_limits<std::uint32_t>::max() || !makeRoom(bytes)) {
        return 0;
    }
    if (bytes > 0) {
        std::memcpy(m_buffer + m_writeOffset, source, bytes);
        m_writeOffset += static_cast<std::uint32_t>(bytes);
    }
    return bytes;
}

unsigned long VornBufferStream::available(unsigned long size, unsigned long count) const
{
    return std::min<std::uint64_t>(byteCount(size, count), unreadBytes());
}

// A read that empties the stream puts both offsets back to byte 8: there is
// nothing left to move.
unsigned long VornBufferStream::read(void* target, unsigned long size, unsigned long count)
{
    VornCriticalSection guard(m_lock, true);
    const unsigned long bytes = available(size, count);
    if (bytes == 0) {
        return 0;
    }
    std::memcpy(target, m_buffer + m_readOffset, bytes);
    m_readOffset += static_cast<std::uint32_t>(bytes);
    if (m_readOffset == m_writeOffset) {
        m_readOffset = kHeaderSize;
        m_writeOffset = kHeaderSize;
    }
    return bytes;
}

unsigned long VornBufferStream::peek(void* target, unsigned long size, unsigned long count)
{
    VornCriticalSection guard(m_lock, true);
    const unsigned long bytes = available(size, count);
    if (bytes > 0) {
        std::memcpy(target, m_buffer + m_readOffset, bytes);
    }
    return bytes;
}

}  // namespace VornSupport
