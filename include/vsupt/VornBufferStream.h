// An object stream in a growing block of memory, readable and writable at
// once.
//
// The block starts with an 8-byte header, the number of payload bytes in
// host order, which buffer() fills in, so that buffer() and size() + 8
// bytes from there can be sent as they stand; the receiving side builds a
// stream from exactly those bytes. The payload always starts at byte 8:
// read takes from the front and moves the rest down. The block grows
// linearly, in whole steps of the growth size (512 by default), and is
// owned by the stream; a pointer from buffer() stays valid until the next
// write or assignment.
//
// read, peek and write each hold the stream's own lock for their whole run,
// so one thread may write while another reads; a value of several writes
// (text) is not atomic, and several writers must lock from outside. reset,
// size, buffer, copying and assignment take no lock.
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
    bool grow(std::uint64_t needed);
    unsigned long available(unsigned long size, unsigned long count) const;
    void copyBlockOf(const VornBufferStream& other);

    // buffer() gives a stream without a block one, to have a header to stamp.
    mutable char* m_buffer;
    std::uint32_t m_readOffset;
    std::uint32_t m_writeOffset;
    std::uint32_t m_growBy;
    mutable std::uint32_t m_capacity;
    VornCriticalSectionObject m_lock;
};

}  // namespace VornSupport

#endif
