/// @class VornSupport::VornThread
/// A POSIX thread as an object.
///
/// A thread runs either a subclass's run() or a VornRunnable, with the
/// VornWorkInformation it was given, and tells its dependents with a
/// ThreadDone, on the ending thread, when the body has returned. An exception
/// that leaves a body ends the thread as a return of 0 would. kill cancels
/// the thread asynchronously, wherever it is: every critical section it holds
/// at that moment is freed as it dies. The kill must find the thread in a
/// frame with nothing left to destroy (no local objects with destructors, no
/// try block) or in a call: the platform's unwinder ends the process when a
/// cancellation lands between the calls of a frame that has clean-ups. A
/// body that expects to be killed keeps its waiting or spinning part in such
/// a plain frame, and takes its locks with lock() and unlock() rather than a
/// scoped guard there. The library's own record and timer operations hold a
/// kill back while they work, and let it act as they return: a body may
/// write records and start or stop timers from such a frame.
///
/// Ownership: whoever made a plain thread owns it, and its destructor waits
/// for the body to end. A thread marked for death owns itself from start on:
/// it deletes its object when the body returns and announces its end to the
/// library's expiry engine, which raises SIGUSR2 and joins the thread on its
/// own thread: a join in the signal handler could deadlock with the code it
/// interrupted. The engine's thread runs only while it has such work or an
/// alarm to wait for, and for a second after. A thread marked for kill is
/// detached and cancelled when its object goes.
///
/// No thread is left unjoined, so that no stack stays mapped: a wait joins
/// the thread even when its body had already returned (there is nothing to
/// wait for, and the join takes only the thread's last instructions), kill
/// detaches the thread it forgets, and the destructor detaches a thread
/// that could not be joined (a body that destroys its own object). The
/// ending thread writes the exit code before it clears m_bRunning, its last
/// touch of the object, so that an owner who sees the thread ended may
/// delete it.
///
/// The marks are plain fields, written without a lock; m_bRunning and
/// m_exitCode are written by the ending thread and read atomically. start,
/// kill and the destructor are for the owner's thread. The static waits may
/// run on any thread.
#ifndef VSUPT_VORNTHREAD_H
#define VSUPT_VORNTHREAD_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCollaborator.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornNotification.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <pthread.h>

#include <cstdint>
#include <string>
#include <vector>

namespace VornSupport {

/// A work description handed to a thread's body; clients derive from it.
class VSUPT_API VornWorkInformation : public VornObjectBase {
public:
    /// An empty description.
    VornWorkInformation();
    /// Copies the base.
    VornWorkInformation(const VornWorkInformation& other);
    /// Assigns the base.
    VornWorkInformation& operator=(const VornWorkInformation& other);
    /// Destroys the object.
    ~VornWorkInformation() override;
};

class VornThread;
/// The entry function of every thread, given the VornThread it runs; not
/// for clients.
void* VornThreadFn(void* self);

class VSUPT_API VornThread : public VornCollaborator, public VornObjectBase {
public:
    /// A body given to a plain VornThread instead of a subclass.
    class VSUPT_API VornRunnable : public VornObjectBase {
    public:
        /// Destroys the object.
        ~VornRunnable() override;
        /// The body without work information; returns 0 here.
        virtual int run();
        /// The body with work information; returns 0 here.
        virtual int run(VornWorkInformation& work);
    };

    /// Sent to the dependents when the body has returned.
    class VSUPT_API ThreadDone : public VornNotification {
    public:
        /// Carries the body's result.
        explicit ThreadDone(int exitCode);
        /// Copies the code.
        ThreadDone(const ThreadDone& other);
        /// Copies the code.
        ThreadDone& operator=(const ThreadDone& other);
        /// Destroys the notification.
        ~ThreadDone() override;

        int m_exitCode;  ///< The body's result.
    };

    /// No operation interprets the value.
    enum t_Priority { low, normal, high };

    /// A thread running run(), named "class " and the normalised name of this class.
    VornThread();
    /// A thread running the runnable, named as by the default constructor.
    explicit VornThread(VornSmartPointer<VornRunnable> runnable);
    /// A thread running run(), with the given name.
    explicit VornThread(const std::string& name);
    /// A thread running the runnable, with the given name.
    VornThread(VornSmartPointer<VornRunnable> runnable, const std::string& name);
    /// Cancels a thread marked for kill; otherwise waits for the body to end
    /// unless the thread is marked for death.
    ~VornThread() override;

    VornThread(const VornThread&) = delete;
    VornThread& operator=(const VornThread&) = delete;

    /// Notifies the dependents, on the calling thread.
    void notify(const VornNotification& notification) override;
    /// Starts the thread once; a failure leaves the object not alive.
    virtual void start();
    /// Does nothing here; subclasses that can be told to end override it.
    virtual void stop();
    /// Takes effect only before start.
    virtual void setWorkInfo(VornSmartPointer<VornWorkInformation> work);
    /// Waits for the body to end: 0 when it has (or there is nothing to wait
    /// for), -2 when timeoutMs ran out first. -1 waits without limit. A
    /// thread found ended is joined.
    virtual int wait(int timeoutMs);
    /// Does nothing and returns 0.
    virtual int setPriority(t_Priority priority);
    /// The body of a subclass without work information; returns 0 here.
    virtual int run();
    /// The body of a subclass with work information; returns 0 here.
    virtual int run(VornWorkInformation& work);

    /// wait(-1).
    void waitForThreadExit();
    /// Cancels the thread and forgets it; the object may be started again.
    void kill();
    /// Makes the thread delete its object when the body returns; set before start.
    void setMarkForDeath();
    /// Makes the destructor cancel the thread; a started thread is detached.
    void setMarkForKill();
    /// True from start until kill or the object's end, also after the body
    /// has returned.
    bool isAlive();
    /// -1 until the thread has been started.
    int getExitCode() const;
    /// The thread's name.
    const std::string& getName() const;
    /// Replaces the thread's name.
    void setName(const std::string& name);
    /// A pointer to the thread's pthread_t, null when not alive.
    void* getHandle();

    /// pthread_self() of the calling thread.
    static unsigned long getCurrentThreadId();

    /// Waits for all the threads, or with waitAll false for one of them, for
    /// at most timeoutMs (whole seconds count; 0 or less waits without
    /// limit, as does -1). Returns 0 when all have ended, the position of the
    /// thread that ended for a wait for one, -2 on time-out and -4 when a
    /// wait for one ended without finding the thread. A thread that ended
    /// before the wait began is not noticed.
    static int wait(std::vector<VornThread*>& threads, bool waitAll, int timeoutMs);
    /// threads is an array of count objects of exactly this class.
    static int wait(int count, VornThread* threads, bool waitAll, int timeoutMs);

private:
    friend void* VornThreadFn(void* self);

    int _run();
    int runBody();
    void announceDone(int exitCode);
    void cleanup();
    static std::string defaultName();

    pthread_t* m_handle;
    VornSmartPointer<VornWorkInformation> m_workInfo;
    std::string m_name;
    std::int32_t m_exitCode;
    bool m_bMarkForDeath;
    bool m_bMarkForKill;
    bool m_bRunning;
    VornSmartPointer<VornRunnable> m_runnable;
    VornCriticalSectionObject m_lock;
};

}  // namespace VornSupport

#endif
