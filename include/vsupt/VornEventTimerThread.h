/// @class VornSupport::VornEventTimerThread
/// A thread that runs timerExpired each time a timer expires: periodic work
/// on a thread of its own rather than on the timer's short-lived thread.
///
/// The client owns the timer, and starts it after start() and stops it only
/// after this object is gone: an expiry before start has marked the thread
/// running ends it at once, and the destructor wakes the thread through the
/// timer. One run of timerExpired answers one wake-up; an expiry that comes
/// while timerExpired is busy wakes nobody, so a slow body skips periods
/// rather than queueing them. A wake-up that falls between two turns is lost
/// too, the destructor's included: the thread then ends at the timer's next
/// expiry.
///
/// By the time this destructor runs the subclass's part is gone, so a
/// subclass ends the thread in its own destructor if timerExpired could still
/// be called then. m_bStarted and m_bRun are plain flags written by one
/// thread and polled by the other. Construction, start and destruction are
/// for the owner's thread.
#ifndef VSUPT_VORNEVENTTIMERTHREAD_H
#define VSUPT_VORNEVENTTIMERTHREAD_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornThread.h>

#include <string>

namespace VornSupport {

class VornTimer;

class VSUPT_API VornEventTimerThread : public VornThread {
public:
    /// A thread named name that runs timerExpired at each expiry of timer.
    VornEventTimerThread(const std::string& name, VornTimer& timer);
    /// Wakes the thread through the timer and waits for it to end, if it
    /// was started.
    ~VornEventTimerThread() override;

    /// Starts the thread and the timer.
    void start() override;
    /// Sleeps in the timer and calls timerExpired after each wake-up until
    /// the destructor clears m_bRun.
    int run() override;
    /// The periodic work, run on this thread at each expiry of the timer.
    virtual void timerExpired() = 0;

private:
    VornTimer& m_timer;
    bool m_bStarted;
    bool m_bRun;
};

}  // namespace VornSupport

#endif
