// The thread that does the work of the library's three signals.
//
// SIGUSR1 (arm the interval timer), SIGALRM (start a timer thread) and
// SIGUSR2 (join the threads that deleted themselves) are handled in two
// halves. The handler only counts its signal in an atomic and posts a
// semaphore, both safe wherever the signal lands; the relay thread, woken by
// the semaphore, does the work. That work allocates, creates and joins
// threads and takes critical sections: in a handler it could deadlock on the
// allocator's or the thread library's locks held by the interrupted code.
//
// The relay is no permanent thread. The modules hold it while they may need
// it: while a timer is queued, and while an ended thread waits to be joined.
// A hold starts it if it is not running. It ends once nothing holds it and it
// has had no work for a second, so that a run of log records, each of which
// queues and drops the logger's quiet timer, does not start a thread each.
// The stop sequence ends it for good. A forked child starts without a relay
// and starts one at its next hold.
//
// post is for signal handlers and may run anywhere. hold and release may run
// on any thread, with any of the library's locks held: the relay's state
// mutex is a leaf, and the relay does its work without it. Each performer
// runs under a second mutex of its own, which withdraw waits for.
#ifndef VSUPT_SIGNALRELAY_H
#define VSUPT_SIGNALRELAY_H

namespace VornSupport {

class SignalRelay {
public:
    enum Work { ArmIntervalTimer, StartTimerThread, JoinEndedThreads, WorkKinds };

    // Called by the start sequence before the handlers are installed. A
    // performer given everyPost runs once per post; others run once however
    // many posts came since they last ran.
    static void setPerformer(Work work, void (*performer)(), bool everyPost);
    // For the stop sequence: waits until no performer of that work runs, and
    // runs none after. The caller must hold no lock that a performer takes.
    static void withdraw(Work work);
    // Safe in a signal handler; keeps errno.
    static void post(Work work);
    static void hold();
    static void release(int holds = 1);
    // Joins the relay and starts none after it.
    static void shutDown();
};

}  // namespace VornSupport

#endif
