#include <vsupt/VornBaseProducerConsumer.h>
#include <vsupt/VornBaseSynchronizedQueue.h>

#include "log/LibraryLog.h"
#include "sync/EventImplementation.h"

namespace VornSupport {

VornBaseProducerConsumer::VornBaseProducerConsumer(VornBaseSynchronizedQueue& queue)
    : m_bSentinel(false), m_sync(new EventImplementation), m_queue(queue)
{
    pthread_cond_init(&m_sync->m_condition, nullptr);
    pthread_mutex_init(&m_sync->m_mutex, nullptr);
}

VornBaseProducerConsumer::~VornBaseProducerConsumer()
{
    pthread_cond_destroy(&m_sync->m_condition);
    pthread_mutex_destroy(&m_sync->m_mutex);
    delete m_sync;
}

void VornBaseProducerConsumer::lockSyncMutex()
{
    pthread_mutex_lock(&m_sync->m_mutex);
}

void VornBaseProducerConsumer::unlockSyncMutex()
{
    pthread_mutex_unlock(&m_sync->m_mutex);
}

void VornBaseProducerConsumer::waitForSyncEvent()
{
    pthread_cond_wait(&m_sync->m_condition, &m_sync->m_mutex);
}

void VornBaseProducerConsumer::setSyncEvent()
{
    pthread_cond_broadcast(&m_sync->m_condition);
}

void VornBaseProducerConsumer::produceSentinel(bool clearQueue)
{
    logLibraryRecord(9, "VornBaseProducerConsumer::produceSentinel: waiting for lock");
    lockSyncMutex();
    logLibraryRecord(9, "VornBaseProducerConsumer::produceSentinel: adding sentinel");
    m_bSentinel = true;
    if (clearQueue) {
        logLibraryRecord(9, "VornBaseProducerConsumer::produceSentinel: clearing queue");
        m_queue.clear();
    }
    setSyncEvent();
    unlockSyncMutex();
}

}  // namespace VornSupport
