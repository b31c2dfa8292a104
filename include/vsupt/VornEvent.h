/// @class VornSupport::VornEvent
/// The library's wake-up signal.
///
/// A VornEvent is a condition variable with its mutex, plus a collaborator:
/// set first runs every dependent's handler on the calling thread, then wakes
/// every thread asleep in wait(-1). It is a pulse, not a latch: it keeps no
/// signalled state, and a set that comes while nobody sleeps (or while a
/// waiter is about to sleep) wakes nobody later. Whoever must not lose a
/// wake-up keeps a flag of its own beside the event and checks it after each
/// return of wait.
///
/// A wait with a finite time-out does not sleep: the time-out is handed to the
/// platform as an absolute time near the start of the epoch, so the call
/// comes back at once with -2 or -3. A limited sleep is built from wait(-1)
/// and a timer.
///
/// The event owns its condition and mutex. set, reset and wait may run on any
/// thread; set takes the collaborator's lock between handlers only and never
/// the event's mutex, which wait holds while it sleeps. reset may run only
/// while nobody sleeps in the event. The event must outlive every thread that
/// can touch it.
#ifndef VSUPT_VORNEVENT_H
#define VSUPT_VORNEVENT_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCollaborator.h>

#include <vector>

struct EventImplementation;

namespace VornSupport {

class VSUPT_API VornEvent {
public:
    VornEvent();
    VornEvent(const VornEvent&) = delete;
    VornEvent& operator=(const VornEvent&) = delete;
    virtual ~VornEvent();

    /// Wakes the threads waiting now and notifies the dependents.
    virtual void set();
    /// Re-initialises the condition; there is no state to clear.
    virtual void reset();
    /// timeoutMs -1 sleeps until the next set. Returns 0 when woken (or
    /// spuriously), -2 on time-out, -3 on any other failure of the platform.
    virtual int wait(int timeoutMs);
    /// The event's own record of condition and mutex.
    virtual void* getHandle();
    /// The notification set hands to the dependents; the default is a heap
    /// VornEventNotification, given back to destroyNotification after use.
    virtual VornNotification* createNotification();
    /// Destroys a notification made by createNotification.
    virtual void destroyNotification(VornNotification* notification);

    /// Waits for all the events, or with waitAll false for one of them, each
    /// on a thread of its own, for at most timeoutMs by the rules of
    /// VornThread's wait. Returns 0 when all were set, the position of the
    /// event for a wait for one, -2 on time-out. On its way out it sets every
    /// event of the vector, the ones not signalled too: that is what ends the
    /// threads still asleep in them.
    static int wait(std::vector<VornEvent*>& events, bool waitAll, int timeoutMs);
    /// events is an array of count objects of exactly this class.
    static int wait(int count, VornEvent* events, bool waitAll, int timeoutMs);

    /// Adds a dependent to be notified at each set(); the event does not own it.
    void addDependent(VornDependent& dependent);
    /// Removes a dependent added with addDependent.
    void removeDependent(VornDependent& dependent);

private:
    VornCollaborator m_collaborator;
    EventImplementation* m_handle;
};

}  // namespace VornSupport

#endif
