// An object stream in a growing block of memory, readable and writable at
// once.
//
// The block starts with an 8-byte header, the number of payload bytes in
// host order, which buffer() fills in, so that buffer() and size() + 8
// bytes from there can be sent as they stand; the receiving side builds a
// stream from exactly those bytes. Whenever the block can be seen (through
// buffer() or a copy), the unread payload starts at byte 8. In between, read
// only moves the read offset forward; the unread rest is moved down to byte 8
// when buffer() or a copy shows the block, or when a write needs the room
// behind it. Moving it at every read, as a plain reading of the format
// suggests, made reading a stream back cost the square of its size. The
// block grows linearly, in whole steps of the growth size (512 by default),
// reckoned as if the payload stood at byte 8, and is owned by the stream; a
// pointer from buffer() stays valid until the next write or assignment.
//
// read, peek and write each hold the stream's own lock for their whole run,
// so one thread may write while another reads; a value of several writes
// (text) is not atomic, and several writers must lock from outside. buffer()
// holds the lock too, because it may move the payload under a reader. reset,
// size, copying and assignment take no lock.
#ifndef VSUPT_VORNBUFFERSTREAM_H
#define VSUPT_VORNBUFFERSTREAM_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornInputObjectStream.h>
#include <vsupt/VornOutputObjectStream.h>

#include <cstdint>

namespace VornSupport {

class VSUPT_API VornBufferStream : public VornInputObjectStream, public VornOutputObjectStream {
public:
    VornBufferStream();
    // A growBy of 0 (in its low 32 bits) means 512.
    explicit VornBufferStream(unsigned long growBy);
    // Takes a copy of a whole block as buffer() gives it, header included;
    // the header is not looked at. A block shorter than the header holds no
    // payload.
    VornBufferStream(void* data, unsigned int size);
    // Copies the block; the copy has a lock of its own.
    VornBufferStream(const VornBufferStream& other);
    VornBufferStream& operator=(const VornBufferStream& other);
    ~VornBufferStream() override;

    // Keeps the block and its capacity.
    void reset() override;
    unsigned long read(void* target, unsigned long size, unsigned long count) override;
    unsigned long write(const void* source, unsigned long size, unsigned long count) override;
    // As read, but the bytes stay in the stream.
    virtual unsigned long peek(void* target, unsigned long size, unsigned long count);

    // Payload bytes waiting to be read.
    unsigned long size() const;
    // Stamps the header and returns the block; null only when a stream that
    // had no block yet cannot get one.
    void* buffer() const;

private:
    bool makeRoom(std::uint64_t bytes);
    bool grow(std::uint64_t bytes);
    void moveUnreadToFront() const;
    std::uint32_t unreadBytes() const;
    unsigned long available(unsigned long size, unsigned long count) const;
    void copyBlockOf(const VornBufferStream& other);

    // buffer() gives a stream without a block one, to have a header to stamp,
    // and moves the unread payload to byte 8, under the lock.
    mutable char* m_buffer;
    mutable std::uint32_t m_readOffset;
    mutable std::uint32_t m_writeOffset;
    std::uint32_t m_growBy;
    mutable std::uint32_t m_capacity;
    mutable VornCriticalSectionObject m_lock;
};

}  // namespace VornSupport

#endif
