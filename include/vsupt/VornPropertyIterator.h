/// @class VornSupport::VornPropertyIterator
/// Visitor of the properties of a VornProperties store.
///
/// A program derives from VornPropertyIterator and overrides process, which
/// VornProperties::forEach calls once for each property, in ascending name
/// order, on the thread that called forEach. The iterator has no state of
/// its own, and the store does not own it; forEach takes no lock, so the
/// store must not change while it runs.
#ifndef VSUPT_VORNPROPERTYITERATOR_H
#define VSUPT_VORNPROPERTYITERATOR_H

#include <vsupt/VornPropertyIteratorParameter.h>

namespace VornSupport {

template <class StringType>
class VornPropertyIterator {
public:
    VornPropertyIterator() = default;
    /// Copies nothing: an iterator has no state of its own.
    VornPropertyIterator(const VornPropertyIterator&) {}
    /// Copies nothing: an iterator has no state of its own.
    VornPropertyIterator& operator=(const VornPropertyIterator&) { return *this; }
    virtual ~VornPropertyIterator() = default;

    /// Does nothing here.
    virtual void process(const VornPropertyIteratorParameter<StringType>&) {}
};

}  // namespace VornSupport

#endif
