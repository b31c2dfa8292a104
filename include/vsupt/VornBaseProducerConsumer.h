/// @class VornSupport::VornBaseProducerConsumer
/// The part of a producer-consumer pair that does not depend on the element
/// type: a condition with its mutex, and the sentinel flag that says no more
/// items come.
///
/// A typed pair derives from it. Its producer takes the sync mutex, adds to
/// the queue, calls setSyncEvent and lets go of the mutex; its consumer takes
/// the mutex, looks at the queue and at m_bSentinel, and calls
/// waitForSyncEvent while there is nothing to do. Holding the mutex across
/// that test and the wait is what keeps a wake-up from being lost. The sync
/// mutex is always taken before the queue's own lock. The sentinel is never
/// cleared: it ends the pair for good.
///
/// The pair owns its condition and mutex but not the queue, which must
/// outlive it. Every operation but construction and destruction may run on
/// any thread.
#ifndef VSUPT_VORNBASEPRODUCERCONSUMER_H
#define VSUPT_VORNBASEPRODUCERCONSUMER_H

#include <vsupt/VsuptExport.h>

struct EventImplementation;

namespace VornSupport {

class VornBaseSynchronizedQueue;

class VSUPT_API VornBaseProducerConsumer {
public:
    /// Works on queue, which must outlive this object.
    explicit VornBaseProducerConsumer(VornBaseSynchronizedQueue& queue);
    VornBaseProducerConsumer(const VornBaseProducerConsumer&) = delete;
    VornBaseProducerConsumer& operator=(const VornBaseProducerConsumer&) = delete;
    virtual ~VornBaseProducerConsumer();

    /// Takes the sync mutex that guards the queue's condition.
    void lockSyncMutex();
    /// Gives the sync mutex back.
    void unlockSyncMutex();
    /// Sleeps once; the caller holds the sync mutex and tests its own
    /// condition again after each return.
    void waitForSyncEvent();
    /// Wakes every thread asleep in waitForSyncEvent.
    void setSyncEvent();
    /// Sets the sentinel and wakes the consumers, all under the sync mutex.
    /// With clearQueue the pending items are thrown away, so the consumers
    /// end at once; without it they drain the queue first.
    void produceSentinel(bool clearQueue);

protected:
    /// Written and read under the sync mutex.
    bool m_bSentinel;

private:
    EventImplementation* m_sync;

protected:
    /// The queue the producers and consumers share.
    VornBaseSynchronizedQueue& m_queue;
};

}  // namespace VornSupport

#endif
