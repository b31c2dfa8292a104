/// @class VornSupport::VornTimerManager
/// The scheduler behind every VornTimer.
///
/// One manager per process, made at first use and deleted by the library's
/// stop sequence; after that, getInstance throws for the rest of the process.
/// It keeps the running timers, which it does not own, in a list sorted by
/// expiry, and scans it: elapsed takes out what is due, re-queues the
/// repeating timers and calls set() on each with the list lock released.
///
/// The manager does not arm the system's interval timer itself nor start
/// the threads that scan: the library's expiry engine does, driven by the
/// library's signals (the engine's header, among the library's sources,
/// tells the whole road). A change to the list asks the engine for an alarm
/// by the first expiry (reset(false)), which raises SIGUSR1 only if that
/// comes before the alarm already armed or asked for: an alarm that comes
/// too early finds nothing due, and its scan asks for the next one. The
/// engine arms through reset(true), and starts a timer thread through
/// timeout() at each alarm.
///
/// Scans run on timer threads only: a change that finds the first timer
/// already due leaves it to a timer thread, which the engine starts at once,
/// because a client's handler run on the changing thread ran inside that
/// thread's open log record, mixed the two records and took the logger's
/// lock and the manager's in opposite orders until both threads deadlocked.
/// A scan that ends with the first timer due scans again on its own thread.
///
/// m_timersLock guards the list; m_elapsedLock lets one scan run at a time.
/// A scan takes m_elapsedLock, then m_timersLock, and nothing takes them in
/// the other order. getInstance takes no lock: the first call belongs to a
/// quiet moment.
///
/// A timer that goes while a scan is about to call its set() waits for that
/// call to return, unless it is destroyed by its own handler. A timer thread
/// that starts while cancelTimer runs gives up its scan, but still asks for
/// the next alarm, since a change may have counted on that scan.
#ifndef VSUPT_VORNTIMERMANAGER_H
#define VSUPT_VORNTIMERMANAGER_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornTimer.h>

#include <vector>

namespace VornSupport {

class VornCriticalSection;
class VornTimerThread;

class VSUPT_API VornTimerManager {
public:
    /// The process's manager, made at the first call. Throws VornException
    /// "VornTimerManager::getInstance: Exiting system" once the manager has
    /// been deleted.
    static VornTimerManager* getInstance();
    /// Deletes the manager, for the library's stop sequence.
    static void deleteInstance();

    /// Puts the timer into the list at its expiry and asks for an alarm by
    /// the first expiry.
    void add(VornTimer& timer);
    /// Erases every occurrence; a timer not in the list is no error.
    void remove(VornTimer& timer);
    /// Works out the distance to the first expiry. With arm, on the engine
    /// thread: arms the interval timer for it, or starts a timer thread if it
    /// is due. Without: asks the engine for an alarm by then.
    void reset(bool arm);
    /// One scan of the list.
    void elapsed();
    /// Starts a thread that scans.
    void timeout();
    /// Makes a timer thread that starts meanwhile give up its scan. m_event,
    /// which nothing can wait in or hear, is no longer set.
    void cancelTimer();

    /// Makes getInstance throw from then on; the timers still in the list,
    /// which it does not own, are abandoned.
    virtual ~VornTimerManager();

    VornTimerManager(const VornTimerManager&) = delete;
    VornTimerManager& operator=(const VornTimerManager&) = delete;

private:
    friend class VornTimer;
    friend class VornTimerThread;

    VornTimerManager();
    // With m_timersLock held.
    void addImpl(VornTimer& timer);
    void takeOut(VornTimer& timer);
    void askForAlarm();
    void scanOnce();
    bool firstIsDue();

    void removeIfQueued(VornTimer& timer);
    void fire(VornTimer& timer);
    void waitUntilNotFiring(const VornTimer& timer);
    // The same with the list lock held once, by guard.
    void waitUntilNotFiring(const VornTimer& timer, VornCriticalSection& guard);

    VornEvent m_event;  // kept for the layout of the class
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
