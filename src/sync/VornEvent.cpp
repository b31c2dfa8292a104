#include <vsupt/VornEvent.h>
#include <vsupt/VornEventNotification.h>
#include <vsupt/VornThread.h>

#include "sync/EventImplementation.h"
#include "thread/VornEventWaitThread.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <pthread.h>

namespace {

// Holds the event's mutex for one wait. Cancellation unwinds through the
// destructor, so a waiter killed in its sleep does not leave the mutex taken.
class EventMutexHold {
public:
    explicit EventMutexHold(pthread_mutex_t& mutex) : m_mutex(mutex)
    {
        pthread_mutex_lock(&m_mutex);
    }

    ~EventMutexHold()
    {
        pthread_mutex_unlock(&m_mutex);
    }

    EventMutexHold(const EventMutexHold&) = delete;
    EventMutexHold& operator=(const EventMutexHold&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

// The time-out goes to the platform as an absolute time, without the current
// time added: the deadline lies at the start of the epoch and the wait comes
// back at once. The nanoseconds are the milliseconds times a million in
// 32 bits, wrapped, which the platform may reject as out of range.
timespec epochDeadline(int timeoutMs)
{
    const std::uint32_t wrapped = static_cast<std::uint32_t>(timeoutMs) * 1000000u;
    timespec deadline;
    deadline.tv_sec = timeoutMs / 1000;
    deadline.tv_nsec = static_cast<std::int32_t>(wrapped);
    return deadline;
}

int waitResult(int platformResult)
{
    if (platformResult == 0) {
        return 0;
    }
    return platformResult == ETIMEDOUT ? -2 : -3;
}

}  // namespace

namespace VornSupport {

// ---------------------------------------------------------------------------
// VornEventNotification

VornEventNotification::VornEventNotification() : VornNotification(1) {}

VornEventNotification::VornEventNotification(const VornEventNotification& other)
    : VornNotification(other)
{
}

VornEventNotification::~VornEventNotification() = default;

VornEventNotification& VornEventNotification::operator=(const VornEventNotification& other)
{
    VornNotification::operator=(other);
    return *this;
}

// ---------------------------------------------------------------------------
// VornEvent

VornEvent::VornEvent() : m_handle(new EventImplementation)
{
    pthread_cond_init(&m_handle->m_condition, nullptr);
    pthread_mutex_init(&m_handle->m_mutex, nullptr);
}

VornEvent::~VornEvent()
{
    if (m_handle != nullptr) {
        pthread_cond_destroy(&m_handle->m_condition);
        pthread_mutex_destroy(&m_handle->m_mutex);
        delete m_handle;
    }
}

void VornEvent::set()
{
    if (m_handle == nullptr) {
        return;
    }
    // Dependents run before any sleeper wakes. A throwing dependent leaves
    // set here, with the notification not given back and nobody woken.
    VornNotification* notification = createNotification();
    m_collaborator.notify(*notification);
    destroyNotification(notification);
    pthread_cond_broadcast(&m_handle->m_condition);
}

void VornEvent::reset()
{
    if (m_handle != nullptr) {
        pthread_cond_init(&m_handle->m_condition, nullptr);
    }
}

int VornEvent::wait(int timeoutMs)
{
    if (m_handle == nullptr) {
        return 0;
    }
    int result;
    {
        EventMutexHold hold(m_handle->m_mutex);
        if (timeoutMs == -1) {
            result = pthread_cond_wait(&m_handle->m_condition, &m_handle->m_mutex);
        } else {
            const timespec deadline = epochDeadline(timeoutMs);
            result = pthread_cond_timedwait(&m_handle->m_condition, &m_handle->m_mutex, &deadline);
        }
    }
    return waitResult(result);
}

void* VornEvent::getHandle()
{
    return m_handle;
}

VornNotification* VornEvent::createNotification()
{
    return new VornEventNotification;
}

void VornEvent::destroyNotification(VornNotification* notification)
{
    delete notification;
}

int VornEvent::wait(std::vector<VornEvent*>& events, bool waitAll, int timeoutMs)
{
    std::vector<VornThread*> threads;
    for (VornEvent* event : events) {
        VornThread* thread = new VornEventWaitThread(*event, timeoutMs);
        thread->start();
        threads.push_back(thread);
    }
    const int result = VornThread::wait(threads, waitAll, timeoutMs);
    for (VornThread* thread : threads) {
        delete thread;
    }
    return result;
}

int VornEvent::wait(int count, VornEvent* events, bool waitAll, int timeoutMs)
{
    std::vector<VornEvent*> all;
    for (int i = 0; i < count; ++i) {
        all.push_back(&events[i]);
    }
    return wait(all, waitAll, timeoutMs);
}

void VornEvent::addDependent(VornDependent& dependent)
{
    m_collaborator.addDependent(dependent);
}

void VornEvent::removeDependent(VornDependent& dependent)
{
    m_collaborator.removeDependent(dependent);
}

}  // namespace VornSupport
