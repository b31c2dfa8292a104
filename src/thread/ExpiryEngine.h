// Everything between the library's three signals and a timer thread.
//
// The road of one expiry, from the change of the list to the client's
// handler:
// 1. A thread changes the timer list. If the list's first expiry now comes
//    before the alarm the engine has armed or been asked for, the manager
//    (askForAlarm, as in reset(false)) calls wantAlarmBy, which raises
//    SIGUSR1. A change that brings nothing forward costs no call at all:
//    an alarm armed too early finds nothing due, and the scan it starts
//    asks for the next one.
// 2. The SIGUSR1 handler posts the arming job: it counts the job in an
//    atomic and posts a semaphore, which is safe wherever the signal lands.
// 3. The engine thread wakes and arms: the manager's reset(true) works out
//    the distance to the first expiry and armIntervalTimer calls setitimer;
//    a first timer already due gets a timer thread at once (step 5).
// 4. The interval timer raises SIGALRM; its handler posts the alarm job.
// 5. The engine thread notes that no alarm is armed any more and starts a
//    VornTimerThread, marked for death.
// 6. The timer thread scans the list (VornTimerManager::elapsed) and calls
//    set() on each due timer: the client's handlers run there, never on the
//    engine thread nor on a thread that changed the list. The scan ends by
//    asking for the alarm of the new first expiry (step 1).
// 7. The timer thread deletes its object and announces its end: its id
//    goes on the list of ended threads and SIGUSR2 is raised; the handler
//    posts the join job, and the engine thread joins it. Every thread marked
//    for death ends this way.
//
// Handlers never allocate, lock, create or join: a signal may interrupt
// malloc or the thread library on any thread. Jobs are performed on the
// engine thread, whose signal mask is empty; the timer threads it starts
// inherit that mask. Job is the one hand-off from signal context: another
// module may define a job of its own, enlist it before installing its
// handler and post it from there. The engine must then run while such
// posts may come, since no thread can be started in a handler; a hold that
// module takes would see to it.
//
// The engine thread is not permanent. It runs while an alarm is armed or
// asked for, a job is posted or an ended thread waits to be joined, and
// lingers one second after its last work, so that a run of short-lived
// threads does not start an engine each; then it ends. wantAlarmBy and
// announceEnd start it again. An alarm asked for by a timer that has left
// the list by the time it is armed is armed all the same, so that the
// records that follow cost nothing: after a logger's last record the
// thread waits for the alarm of the first record's quiet timer, at most
// its 60 seconds, and then lingers its second. A forked child starts with
// no engine thread, no alarm and no ended threads of its parent. The stop
// sequence withdraws the timer jobs and waits for the scans under way (each
// timer thread holds a ScanHold for its life) before the manager is
// deleted, and then joins the engine for good.
//
// Locks: the engine's state mutex is a leaf, taken by wantAlarmBy under the
// manager's list lock and by announceEnd. Jobs run with no engine lock but
// the job mutex, which withdraw waits for; the arming job takes the list
// lock under it.
#ifndef VSUPT_EXPIRYENGINE_H
#define VSUPT_EXPIRYENGINE_H

#include <vsupt/VornTimer.h>

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace VornSupport {

class VornTimerManager;

class ExpiryEngine {
public:
    // Work that a signal handler hands to the engine thread. A job made for
    // every post runs once per post; others run once however many posts
    // came since they last ran.
    class Job {
    public:
        constexpr Job(void (*perform)(), bool everyPost) : m_perform(perform), m_bEveryPost(everyPost) {}
        Job(const Job&) = delete;
        Job& operator=(const Job&) = delete;

        // Safe in a signal handler; keeps errno.
        void post();

        // For the engine thread: how many times to run the job now (0 when
        // nothing was posted), one run (none once withdrawn; under the job
        // mutex), and the next job enlisted.
        unsigned takeRuns();
        bool isPosted() const { return m_posted.load() != 0; }
        void run() const
        {
            if (!m_bWithdrawn) {
                m_perform();
            }
        }
        Job* next() const { return m_pNext; }

    private:
        friend class ExpiryEngine;

        void (*m_perform)();
        const bool m_bEveryPost;
        bool m_bWithdrawn = false;
        std::atomic<unsigned> m_posted{0};
        Job* m_pNext = nullptr;
    };

    // Held by each timer thread from its making to the end of its object,
    // so that the stop sequence can wait for the scans under way.
    class ScanHold {
    public:
        ScanHold();
        ~ScanHold();
        ScanHold(const ScanHold&) = delete;
        ScanHold& operator=(const ScanHold&) = delete;
    };

    // Start sequence: the handlers of SIGUSR2 (thread module) and of SIGALRM
    // and SIGUSR1 (timer module), with their jobs.
    static void installReaper();
    static void installAlarm();

    // Step 1, with the manager's list lock held: raises SIGUSR1 unless an
    // alarm is armed, or asked for, at or before the second expirySecond.
    static void wantAlarmBy(std::int64_t expirySecond);
    // Step 3, on the engine thread inside reset(true).
    static void armIntervalTimer(const VornTimer::TimeInterval& distance, std::int64_t expirySecond);
    // Step 5; also for a first timer found due when arming.
    static void startTimerThread(VornTimerManager& manager);
    // Step 7, on a thread marked for death whose object is gone.
    static void announceEnd(pthread_t thread);

    // Enlists a job before its handler is installed.
    static void enlist(Job& job);
    // Waits until the job is not running and runs it no more. The caller
    // must hold no lock that the job takes.
    static void withdraw(Job& job);

    // Stop sequence: the timer jobs go, and the scans under way end, before
    // the manager is deleted.
    static void withdrawAlarm();
    // Joins the engine thread and starts none after it.
    static void shutDown();
};

}  // namespace VornSupport

#endif
