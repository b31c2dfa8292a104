#include <vsupt/VornTimerManager.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornException.h>

#include "thread/ExpiryEngine.h"

#include <unistd.h>

#include <algorithm>
#include <ctime>

namespace VornSupport {

VornTimerManager* VornTimerManager::m_pThis = nullptr;
bool VornTimerManager::m_bExiting = false;

namespace {

VornTimer::TimeInterval now()
{
    return VornTimer::TimeInterval(static_cast<long>(std::time(nullptr)), 0);
}

}  // namespace

void VSUPTInitVornTimer()
{
    ExpiryEngine::installAlarm();
}

// The engine may be about to arm or scan for the manager that goes here.
void VSUPTFinitVornTimer()
{
    ExpiryEngine::withdrawAlarm();
    VornTimerManager::deleteInstance();
}

// ---------------------------------------------------------------------------
// VornTimerManager

VornTimerManager::VornTimerManager()
    : m_nextInterval(1, 0), m_bCancelling(false), m_bInElapsed(false), m_pFiring(nullptr), m_firingThread()
{
}

// Timers still in the list are abandoned without a word; their own stop
// finds the manager gone and does nothing.
VornTimerManager::~VornTimerManager()
{
    m_bExiting = true;
    cancelTimer();
}

VornTimerManager* VornTimerManager::getInstance()
{
    if (m_bExiting) {
        throw VornException("VornTimerManager::getInstance: Exiting system", 0);
    }
    if (m_pThis == nullptr) {
        m_pThis = new VornTimerManager;
    }
    return m_pThis;
}

void VornTimerManager::deleteInstance()
{
    if (m_pThis != nullptr) {
        delete m_pThis;
        m_pThis = nullptr;
    }
}

// The public changes take the list lock once and work through the steps
// below, which expect it held; VornTimer::start does the same for a timer
// that leaves the list and comes back.
void VornTimerManager::add(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    addImpl(timer);
    askForAlarm();
}

void VornTimerManager::remove(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    takeOut(timer);
}

void VornTimerManager::removeIfQueued(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    if (timer.m_bQueued) {
        takeOut(timer);
    }
}

// Before the first timer due in the same second or later: of timers due in
// one second, the last one added comes first.
void VornTimerManager::addImpl(VornTimer& timer)
{
    timer.m_expiry.m_seconds = static_cast<std::int64_t>(std::time(nullptr)) + timer.m_interval.m_seconds;
    timer.m_expiry.m_milliseconds = timer.m_interval.m_milliseconds;
    const auto place = std::find_if(m_timers.begin(), m_timers.end(),
                                    [&timer](const VornTimer* queued) { return timer.m_expiry <= queued->m_expiry; });
    m_timers.insert(place, &timer);
    timer.m_bQueued = true;
}

// Every occurrence goes; a timer not in the list is no error.
void VornTimerManager::takeOut(VornTimer& timer)
{
    m_timers.erase(std::remove(m_timers.begin(), m_timers.end(), &timer), m_timers.end());
    if (!m_timers.empty()) {
        askForAlarm();
    } else {
        cancelTimer();
    }
    timer.m_bQueued = false;
}

// A change asks the engine for an alarm by the first expiry, which costs
// nothing unless that comes before the alarm already armed or asked for.
// A first timer already due is asked for too, and so scanned on a timer
// thread: no client's handler runs on the thread that changed the list. A
// scan under way asks when it ends.
void VornTimerManager::askForAlarm()
{
    if (!m_bInElapsed && !m_timers.empty()) {
        ExpiryEngine::wantAlarmBy(m_timers.front()->m_expiry.m_seconds);
    }
}

// On the engine thread. An interval timer armed earlier stays armed when
// the list empties: its SIGALRM then finds nothing to do.
void VornTimerManager::reset(bool arm)
{
    VornCriticalSection guard(m_timersLock, true);
    if (!arm) {
        askForAlarm();
        return;
    }
    if (m_bInElapsed || m_timers.empty()) {
        return;
    }
    if (firstIsDue()) {
        timeout();
    } else {
        ExpiryEngine::armIntervalTimer(m_nextInterval, m_timers.front()->m_expiry.m_seconds);
    }
}

// A scan that leaves the first timer due scans again on its own thread, as
// a one-shot timer started again after it fired does: its mark from the
// earlier scan makes the first scan pass it by. Otherwise it asks for the
// alarm of the first expiry.
void VornTimerManager::elapsed()
{
    VornCriticalSection scanGuard(m_elapsedLock, true);
    if (m_bInElapsed) {
        return;
    }
    VornCriticalSection listGuard(m_timersLock, true);
    do {
        scanOnce();
    } while (!m_timers.empty() && firstIsDue());
    askForAlarm();
}

// Each timer is looked at once per scan; after every expiry the walk starts
// again from the front, since the handler may have changed the list. A
// repeating timer is queued again, from this moment, before its handler
// runs, and the handler runs with the list lock given back. A one-shot timer
// that fired is no longer in the list when the flags are cleared, and keeps
// its mark until a later scan.
void VornTimerManager::scanOnce()
{
    m_bInElapsed = true;
    std::size_t position = 0;
    while (position < m_timers.size()) {
        VornTimer* timer = m_timers[position];
        if (timer->m_bVisited) {
            ++position;
            continue;
        }
        timer->m_bVisited = true;
        if (!(timer->m_expiry <= now())) {
            ++position;
            continue;
        }
        remove(*timer);
        if (!timer->isOneShot()) {
            addImpl(*timer);
        }
        fire(*timer);
        position = 0;
    }
    for (VornTimer* timer : m_timers) {
        timer->m_bVisited = false;
    }
    m_bInElapsed = false;
}

// With the list lock held and the list not empty: works out the distance to
// the first expiry, and whether it is due.
bool VornTimerManager::firstIsDue()
{
    m_nextInterval = m_timers.front()->m_expiry;
    m_nextInterval.m_seconds -= static_cast<std::int64_t>(std::time(nullptr));
    return m_nextInterval.m_seconds < 0 || (m_nextInterval.m_seconds == 0 && m_nextInterval.m_milliseconds == 0);
}

// The list lock is given back around the handler by a bare unlock, as the
// scan's guard stays in place. The timer is not touched after its set(),
// which may delete it.
void VornTimerManager::fire(VornTimer& timer)
{
    m_pFiring = &timer;
    m_firingThread = pthread_self();
    m_timersLock.unlock();
    timer.set();
    m_timersLock.lock();
    m_pFiring = nullptr;
}

void VornTimerManager::waitUntilNotFiring(const VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    waitUntilNotFiring(timer, guard);
}

void VornTimerManager::waitUntilNotFiring(const VornTimer& timer, VornCriticalSection& guard)
{
    while (m_pFiring == &timer && !pthread_equal(m_firingThread, pthread_self())) {
        guard.unlock();
        usleep(1000);
        guard.lock();
    }
}

void VornTimerManager::timeout()
{
    ExpiryEngine::startTimerThread(*this);
}

// m_event is not set: nothing can wait in it or hear it, and a logger
// empties the list at every record, which would pay for a notification
// each time.
void VornTimerManager::cancelTimer()
{
    m_bCancelling = true;
    {
        VornCriticalSection guard(m_timersLock, true);
    }
    m_bCancelling = false;
}

}  // namespace VornSupport
