/// @class VornSupport::VornObjectStream
/// Root of the object streams: byte sequences that carry the library's plain
/// values with no type tags, framing or version, so that both sides must
/// agree on the sequence of values. VornInputObjectStream and
/// VornOutputObjectStream fix the byte form of each type; VornBufferStream is
/// the one concrete stream. A stream is used by one thread at a time unless
/// the concrete class says otherwise.
#ifndef VSUPT_VORNOBJECTSTREAM_H
#define VSUPT_VORNOBJECTSTREAM_H

#include <vsupt/VsuptExport.h>

namespace VornSupport {

class VSUPT_API VornObjectStream {
public:
    /// Streams are destroyed through their root.
    virtual ~VornObjectStream();
    /// Forgets the data the stream holds.
    virtual void reset() = 0;
};

}  // namespace VornSupport

#endif
