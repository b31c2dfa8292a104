/// @class VornSupport::VornBaseSynchronizedQueue
/// The part of a queue between threads that does not depend on the element
/// type: the queue's lock. Typed queues derive from it, take the lock through
/// getLock around each access to their items, and empty themselves in clear.
/// clear may be called with a producer-consumer pair's sync mutex held, so it
/// takes the queue's lock by itself when it needs it.
#ifndef VSUPT_VORNBASESYNCHRONIZEDQUEUE_H
#define VSUPT_VORNBASESYNCHRONIZEDQUEUE_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>

namespace VornSupport {

class VSUPT_API VornBaseSynchronizedQueue {
public:
    VornBaseSynchronizedQueue();
    virtual ~VornBaseSynchronizedQueue();

    /// Throws every pending item away.
    virtual void clear() = 0;
    /// The lock that guards the queue's items.
    VornCriticalSectionObject& getLock();

private:
    VornCriticalSectionObject m_lock;
};

}  // namespace VornSupport

#endif
