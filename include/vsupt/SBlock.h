/// @class VornSupport::SBlock
/// One 64-bit cipher block of VornEncryption: the left and right 32-bit
/// halves, the left one first on the wire. A plain value for one thread.
#ifndef VSUPT_SBLOCK_H
#define VSUPT_SBLOCK_H

#include <vsupt/VsuptExport.h>

namespace VornSupport {

class VSUPT_API SBlock {
public:
    /// A block of the two halves.
    SBlock(unsigned int left, unsigned int right) : m_left(left), m_right(right) {}
    /// Copies both halves.
    SBlock(const SBlock& other) = default;
    /// Copies both halves.
    SBlock& operator=(const SBlock& other) = default;
    /// Holds nothing to release.
    virtual ~SBlock();

    /// Exclusive-or of each half with the other block's.
    SBlock& operator^=(const SBlock& other)
    {
        m_left ^= other.m_left;
        m_right ^= other.m_right;
        return *this;
    }

    /// The left half, first on the wire.
    unsigned int m_left;
    /// The right half.
    unsigned int m_right;
};

}  // namespace VornSupport

#endif
