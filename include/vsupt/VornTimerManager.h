// The scheduler behind every VornTimer.
//
// One manager per process, made at first use and deleted by the library's
// stop sequence; after that, getInstance throws for the rest of the process.
// It keeps the running timers, which it does not own, in a list sorted by
// expiry. A thread that changes the list raises SIGUSR1 in its own process,
// and the interval timer is armed with the distance to the first expiry;
// SIGALRM then starts a VornTimerThread, which scans the list, takes out
// what is due, re-queues the repeating timers and calls set() on each with
// the list lock released. Both handlers are installed when the library is
// loaded and stay.
//
// The handlers themselves only note their signal and wake the library's
// relay thread, which arms the interval timer and starts the timer threads
// in their stead. The signal may have interrupted malloc or the thread
// library on any thread, and creating a thread from there can deadlock the
// process. The relay runs only while a timer is queued, and for a second
// after; a timer that the relay finds already due is scanned on a new timer
// thread, so that no handler of a client runs on the relay.
//
// m_timersLock guards the list; m_elapsedLock lets one scan run at a time.
// A scan takes m_elapsedLock, then m_timersLock. A change to the list that
// finds the first timer already due scans on the changing thread, taking
// them in the other order, but only if no scan is under way elsewhere:
// otherwise a new timer thread scans. getInstance takes no lock: the first
// call belongs to a quiet moment.
//
// A timer that goes while a scan is about to call its set() waits for that
// call to return, unless it is destroyed by its own handler.
#ifndef VSUPT_VORNTIMERMANAGER_H
#define VSUPT_VORNTIMERMANAGER_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornTimer.h>

#include <vector>

namespace VornSupport {

class VornTimerThread;

class VSUPT_API VornTimerManager {
public:
    // Throws VornException "VornTimerManager::getInstance: Exiting system"
    // once the manager has been deleted.
    static VornTimerManager* getInstance();
    static void deleteInstance();

    void add(VornTimer& timer);
    // Erases every occurrence; a timer not in the list is no error.
    void remove(VornTimer& timer);
    // Works out the distance to the first expiry. If it is due, scans at
    // once (!arm) or starts a timer thread (arm); else arms the interval
    // timer (arm) or raises SIGUSR1 to have it armed (!arm).
    void reset(bool arm);
    // One scan of the list.
    void elapsed();
    // Starts a thread that scans.
    void timeout();
    void cancelTimer();

    virtual ~VornTimerManager();

    VornTimerManager(const VornTimerManager&) = delete;
    VornTimerManager& operator=(const VornTimerManager&) = delete;

private:
    friend class VornTimer;
    friend class VornTimerThread;

    VornTimerManager();
    void addImpl(VornTimer& timer);
    void removeIfQueued(VornTimer& timer);
    void fire(VornTimer& timer);
    void waitUntilNotFiring(const VornTimer& timer);
    void scanNow();

    VornEvent m_event;
    std::vector<VornTimer*> m_timers;
    VornCriticalSectionObject m_timersLock;
    VornTimer::TimeInterval m_nextInterval;
    bool m_bCancelling;
    VornCriticalSectionObject m_elapsedLock;
    bool m_bInElapsed;
    // The timer whose set() a scan is calling, and the scanning thread.
    const VornTimer* m_pFiring;
    pthread_t m_firingThread;

    static VornTimerManager* m_pThis;
    static bool m_bExiting;
};

}  // namespace VornSupport

#endif
