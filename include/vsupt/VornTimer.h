/// @class VornSupport::VornTimer
/// An event that sets itself when its interval is up.
///
/// All timers of a process share one interval timer of the system, driven by
/// VornTimerManager: start and reset put the timer into the manager's list,
/// sorted by expiry in whole seconds of time(), and stop takes it out. Each
/// expiry runs on a short-lived thread of its own, which calls the timer's
/// virtual set(): dependents hear a VornEventNotification there, sleepers
/// wake, and subclasses override set for a callback. A repeating timer is
/// back in the list, with an expiry counted from that moment, before its
/// handler runs; so periods drift, and none is made up for.
///
/// Intervals count in whole seconds: milliseconds are kept, but a timer is
/// due as soon as the clock reaches its second, so an interval below one
/// second fires almost at once and 1500 ms fire after about a second. Of
/// timers due in the same second, the one started last fires first.
///
/// The manager does not own its timers: a timer stops itself when it goes.
/// start, stop and reset may run on any thread, and from a timer's own
/// handler. They take the manager's list lock, and raise SIGUSR1 only when
/// the timer now comes before the alarm already armed, so that a timer
/// started and stopped over and over costs no system call. A thread killed
/// in one of them dies as it returns, with the list whole; in the timer's
/// destructor a kill still ends the process, as in any destructor.
#ifndef VSUPT_VORNTIMER_H
#define VSUPT_VORNTIMER_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornEvent.h>

#include <cstdint>

namespace VornSupport {

class VornTimerManager;

class VSUPT_API VornTimer : public VornEvent {
public:
    /// A length of time, or a moment in seconds since the epoch, with a
    /// remainder in milliseconds. The comparisons look at the seconds alone
    /// where they differ; at equal seconds they read the left side's fields
    /// against each other, so that for moments "a < b" and "a <= b" are both
    /// true and "a == b" is false. The scheduler's order depends on that.
    class VSUPT_API TimeInterval {
    public:
        /// Zero seconds and zero milliseconds.
        TimeInterval();
        /// As set(seconds, milliseconds).
        TimeInterval(long seconds, long milliseconds);

        /// Moves whole seconds out of milliseconds, truncating.
        void set(long seconds, long milliseconds);

        /// Earlier or shorter, by the rule above.
        bool operator<(const TimeInterval& other) const;
        /// Equal, by the rule above.
        bool operator==(const TimeInterval& other) const;
        /// Not later nor longer, by the rule above.
        bool operator<=(const TimeInterval& other) const;

        std::int64_t m_seconds;       ///< Whole seconds.
        std::int64_t m_milliseconds;  ///< The remainder in milliseconds.
    };

    /// Interval 0, repeating.
    VornTimer();
    /// A stopped timer with the interval milliseconds.
    VornTimer(long milliseconds, bool oneShot);
    /// A stopped timer with the interval seconds and milliseconds.
    VornTimer(long seconds, long milliseconds, bool oneShot);
    /// Stops the timer; waits for a scan calling its set() on another thread.
    ~VornTimer() override;

    /// Restarts the timer from now with its stored interval; starts one that
    /// was only constructed.
    void reset() override;
    /// Stores the interval milliseconds and starts the timer from now.
    virtual void start(long milliseconds, bool oneShot);
    /// Stores the interval and starts the timer from now. An interval with
    /// neither part positive stores the values and leaves the timer stopped.
    virtual void start(long seconds, long milliseconds, bool oneShot);
    /// Takes the timer out of the list; a stopped timer is no error.
    virtual void stop();
    /// True for a timer that fires once per start.
    virtual bool isOneShot() const;

private:
    friend class VornTimerManager;
    friend class VornLogging;

    // For the logger's quiet timer: reset, unless the timer is queued with
    // the very expiry a reset would give it, once no scan calls its set().
    // Gives the expiry's second.
    std::int64_t resetUnlessUnchanged();

    TimeInterval m_interval;
    TimeInterval m_expiry;
    bool m_bOneShot;
    bool m_bVisited;
    bool m_bQueued;
};

}  // namespace VornSupport

#endif
