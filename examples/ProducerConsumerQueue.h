// A typed queue between threads and its producer-consumer pair, built on the
// library's two base classes.
//
// The queue takes its base's lock around each access to its items. The pair
// keeps the sync mutex across a consumer's test of the queue and the
// sentinel and its wait, so that no item and no sentinel is missed: produce
// adds under that mutex and wakes the consumers, consume takes an item or
// reports that the sentinel has come and the queue is empty.
#ifndef VSUPT_EXAMPLES_PRODUCERCONSUMERQUEUE_H
#define VSUPT_EXAMPLES_PRODUCERCONSUMERQUEUE_H

#include <vsupt/VornBaseProducerConsumer.h>
#include <vsupt/VornBaseSynchronizedQueue.h>
#include <vsupt/VornCriticalSection.h>

#include <cstddef>
#include <deque>

template <class T>
class SynchronizedQueue : public VornSupport::VornBaseSynchronizedQueue {
public:
    void push(const T& item)
    {
        VornSupport::VornCriticalSection guard(getLock(), true);
        m_items.push_back(item);
    }

    // False when the queue is empty.
    bool pop(T& item)
    {
        VornSupport::VornCriticalSection guard(getLock(), true);
        if (m_items.empty()) {
            return false;
        }
        item = m_items.front();
        m_items.pop_front();
        return true;
    }

    std::size_t size()
    {
        VornSupport::VornCriticalSection guard(getLock(), true);
        return m_items.size();
    }

    void clear() override
    {
        VornSupport::VornCriticalSection guard(getLock(), true);
        m_items.clear();
    }

private:
    std::deque<T> m_items;
};

template <class T>
class ProducerConsumer : public VornSupport::VornBaseProducerConsumer {
public:
    explicit ProducerConsumer(SynchronizedQueue<T>& queue) : VornBaseProducerConsumer(queue), m_items(queue) {}

    void produce(const T& item)
    {
        lockSyncMutex();
        m_items.push(item);
        setSyncEvent();
        unlockSyncMutex();
    }

    // Waits for an item; false once the sentinel has come and the queue is
    // empty.
    bool consume(T& item)
    {
        lockSyncMutex();
        bool taken = m_items.pop(item);
        while (!taken && !m_bSentinel) {
            waitForSyncEvent();
            taken = m_items.pop(item);
        }
        unlockSyncMutex();
        return taken;
    }

private:
    SynchronizedQueue<T>& m_items;
};

#endif
