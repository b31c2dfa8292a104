#include <vsupt/VornTimerManager.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornException.h>

#include "thread/LibrarySignals.h"
#include "thread/SignalRelay.h"
#include "thread/VornTimerThread.h"

#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

namespace VornSupport {

VornTimerManager* VornTimerManager::m_pThis = nullptr;
bool VornTimerManager::m_bExiting = false;

namespace {

VornTimer::TimeInterval now()
{
    return VornTimer::TimeInterval(static_cast<long>(std::time(nullptr)), 0);
}

// ---------------------------------------------------------------------------
// The interval timer and the two signals. Each handler only hands its signal
// to the relay thread, which does the work: SIGUSR1 arms the interval timer,
// SIGALRM starts a timer thread. So the interval timer is always armed on the
// relay, whatever thread changed the list.

// The milliseconds go into the microseconds field as they are: a remainder
// only makes the signal come sooner, and the expiry test counts whole
// seconds anyway.
void armIntervalTimer(const VornTimer::TimeInterval& distance)
{
    itimerval value{};
    value.it_value.tv_sec = static_cast<time_t>(distance.m_seconds);
    value.it_value.tv_usec = static_cast<suseconds_t>(distance.m_milliseconds);
    setitimer(ITIMER_REAL, &value, nullptr);
}

void askForArming()
{
    kill(getpid(), SIGUSR1);
}

void SignalHandler(int)
{
    SignalRelay::post(SignalRelay::ArmIntervalTimer);
}

void AlarmHandler(int)
{
    SignalRelay::post(SignalRelay::StartTimerThread);
}

void armOnRelay()
{
    try {
        VornTimerManager::getInstance()->reset(true);
    } catch (const VornException&) {
    }
}

void startTimerThreadOnRelay()
{
    try {
        VornTimerManager::getInstance()->timeout();
    } catch (const VornException&) {
    }
}

}  // namespace

void VSUPTInitVornTimer()
{
    SignalRelay::setPerformer(SignalRelay::ArmIntervalTimer, armOnRelay, false);
    SignalRelay::setPerformer(SignalRelay::StartTimerThread, startTimerThreadOnRelay, true);
    installLibrarySignalHandler(SIGALRM, AlarmHandler);
    installLibrarySignalHandler(SIGUSR1, SignalHandler);
}

// The relay may be about to arm or scan for the manager that goes here.
void VSUPTFinitVornTimer()
{
    SignalRelay::withdraw(SignalRelay::ArmIntervalTimer);
    SignalRelay::withdraw(SignalRelay::StartTimerThread);
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

void VornTimerManager::add(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    addImpl(timer);
    reset(false);
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
    if (m_timers.size() == 1) {
        SignalRelay::hold();
    }
    timer.m_bQueued = true;
}

void VornTimerManager::remove(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    const bool wasEmpty = m_timers.empty();
    m_timers.erase(std::remove(m_timers.begin(), m_timers.end(), &timer), m_timers.end());
    if (!wasEmpty && m_timers.empty()) {
        SignalRelay::release();
    }
    if (!m_timers.empty()) {
        reset(false);
    } else {
        cancelTimer();
    }
    timer.m_bQueued = false;
}

void VornTimerManager::removeIfQueued(VornTimer& timer)
{
    VornCriticalSection guard(m_timersLock, true);
    if (timer.m_bQueued) {
        remove(timer);
    }
}

// An interval timer armed earlier stays armed when the list empties: its
// SIGALRM then finds nothing to do. On the relay (arm), a timer already due
// goes to a new timer thread rather than being scanned there: a client's
// handler must never hold up the signals queued behind it.
void VornTimerManager::reset(bool arm)
{
    VornCriticalSection guard(m_timersLock, true);
    if (m_bInElapsed || m_timers.empty()) {
        return;
    }
    m_nextInterval = m_timers.front()->m_expiry;
    m_nextInterval.m_seconds -= static_cast<std::int64_t>(std::time(nullptr));
    if (m_nextInterval.m_seconds < 0 || (m_nextInterval.m_seconds == 0 && m_nextInterval.m_milliseconds == 0)) {
        if (arm) {
            timeout();
        } else {
            scanNow();
        }
    } else if (arm) {
        armIntervalTimer(m_nextInterval);
    } else {
        askForArming();
    }
}

// The first timer is due: the scan runs here, on the thread that changed
// the list and still holds its lock. If a scan is under way on another
// thread, waiting for it here could block both, since it needs the list
// lock to go on; a new timer thread, which holds nothing, scans instead.
void VornTimerManager::scanNow()
{
    if (!m_elapsedLock.testAndSet()) {
        timeout();
        return;
    }
    elapsed();
    m_elapsedLock.unlock();
}

// Each timer is looked at once per scan; after every expiry the walk starts
// again from the front, since the handler may have changed the list. A
// repeating timer is queued again, from this moment, before its handler
// runs, and the handler runs with the list lock given back. A one-shot timer
// that fired is no longer in the list when the flags are cleared, and keeps
// its mark until a later scan.
void VornTimerManager::elapsed()
{
    VornCriticalSection scanGuard(m_elapsedLock, true);
    if (m_bInElapsed) {
        return;
    }
    VornCriticalSection listGuard(m_timersLock, true);
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
    listGuard.unlock();
    reset(false);
}

// The list lock is given back around the handler by a bare unlock: when the
// scan runs inside reset on a changing thread, that thread still holds it
// once more. The timer is not touched after its set(), which may delete it.
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
    while (m_pFiring == &timer && !pthread_equal(m_firingThread, pthread_self())) {
        guard.unlock();
        usleep(1000);
        guard.lock();
    }
}

void VornTimerManager::timeout()
{
    VornTimerThread* thread = new VornTimerThread(*this);
    thread->setMarkForDeath();
    thread->start();
}

void VornTimerManager::cancelTimer()
{
    m_bCancelling = true;
    {
        VornCriticalSection guard(m_timersLock, true);
        m_event.set();
    }
    m_bCancelling = false;
}

}  // namespace VornSupport
