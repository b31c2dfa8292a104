#include <vsupt/VornThread.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornTimer.h>
#include <vsupt/VornDependent.h>

#include "frame/ExceptionBorder.h"
#include "log/LibraryLog.h"
#include "thread/ExpiryEngine.h"

#include <cxxabi.h>
#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <typeinfo>

#if defined(__SANITIZE_ADDRESS__)
#define VSUPT_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VSUPT_ADDRESS_SANITIZER 1
#endif
#endif
#if VSUPT_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace VornSupport {

// ---------------------------------------------------------------------------
// VornWorkInformation, VornRunnable, ThreadDone

VornWorkInformation::VornWorkInformation() = default;
VornWorkInformation::VornWorkInformation(const VornWorkInformation& other) : VornObjectBase(other) {}
VornWorkInformation& VornWorkInformation::operator=(const VornWorkInformation& other)
{
    VornObjectBase::operator=(other);
    return *this;
}
VornWorkInformation::~VornWorkInformation() = default;

VornThread::VornRunnable::~VornRunnable() = default;

int VornThread::VornRunnable::run()
{
    return 0;
}

int VornThread::VornRunnable::run(VornWorkInformation&)
{
    return 0;
}

VornThread::ThreadDone::ThreadDone(int exitCode) : m_exitCode(exitCode) {}
VornThread::ThreadDone::ThreadDone(const ThreadDone& other) : VornNotification(other), m_exitCode(other.m_exitCode) {}
VornThread::ThreadDone& VornThread::ThreadDone::operator=(const ThreadDone& other)
{
    VornNotification::operator=(other);
    m_exitCode = other.m_exitCode;
    return *this;
}
VornThread::ThreadDone::~ThreadDone() = default;

// ---------------------------------------------------------------------------
// The thread's handle and its running mark

namespace {

// What m_handle points at: the thread's id comes first, so that m_handle and
// getHandle give the id as ever, followed by what has become of the id. An
// id that was joined is gone and may not be joined, detached or cancelled;
// one that was detached may not be joined or detached again. Each ended
// thread that is neither by the time its object goes is detached, so that
// no stack stays mapped.
struct ThreadHandle {
    pthread_t id;
    bool bJoined = false;
    bool bDetached = false;
};
static_assert(std::is_standard_layout<ThreadHandle>::value && offsetof(ThreadHandle, id) == 0,
              "m_handle points at the id, the first member");

ThreadHandle& handleOf(pthread_t* handle)
{
    return *reinterpret_cast<ThreadHandle*>(handle);
}

// Joins a thread that has not been joined or detached; a thread that
// tries to join itself stays as it was.
void join(ThreadHandle& handle)
{
    if (!handle.bJoined && !handle.bDetached && pthread_join(handle.id, nullptr) == 0) {
        handle.bJoined = true;
    }
}

void detach(ThreadHandle& handle)
{
    if (!handle.bJoined && !handle.bDetached) {
        pthread_detach(handle.id);
        handle.bDetached = true;
    }
}

// m_bRunning and m_exitCode are written by the ending thread and read by
// others, with no lock: the last write of m_bRunning publishes the exit
// code, and a reader that sees it false sees the code.
bool isRunning(const bool& running)
{
    return __atomic_load_n(&running, __ATOMIC_ACQUIRE);
}

void setRunning(bool& running, bool value)
{
    __atomic_store_n(&running, value, __ATOMIC_RELEASE);
}

}  // namespace

// ---------------------------------------------------------------------------
// VornThread

VornThread::VornThread() : VornThread(VornSmartPointer<VornRunnable>(), defaultName()) {}

VornThread::VornThread(VornSmartPointer<VornRunnable> runnable) : VornThread(runnable, defaultName()) {}

VornThread::VornThread(const std::string& name) : VornThread(VornSmartPointer<VornRunnable>(), name) {}

VornThread::VornThread(VornSmartPointer<VornRunnable> runnable, const std::string& name)
    : m_handle(nullptr),
      m_name(name),
      m_exitCode(-1),
      m_bMarkForDeath(false),
      m_bMarkForKill(false),
      m_bRunning(false),
      m_runnable(runnable),
      m_lock(false)
{
}

// Subclasses tell their body to stop in their own destructors: here the
// object is a VornThread again, and the wait is the base one.
VornThread::~VornThread()
{
    if (m_handle == nullptr) {
        return;
    }
    if (m_bMarkForKill) {
        kill();
        return;
    }
    if (!m_bMarkForDeath) {
        waitForThreadExit();
        // A body that deletes its own object cannot join itself.
        detach(handleOf(m_handle));
    }
    if (m_handle != nullptr) {
        cleanup();
    }
}

std::string VornThread::defaultName()
{
    return "class " + normalizeClassName(typeid(VornThread).name());
}

void VornThread::notify(const VornNotification& notification)
{
    VornCollaborator::notify(notification);
}

// m_bRunning is set before the thread exists: a thread marked for death may
// have deleted this object by the time pthread_create returns.
void VornThread::start()
{
    if (m_handle != nullptr) {
        return;
    }
    ThreadHandle* handle = new ThreadHandle;
    m_handle = &handle->id;
    setRunning(m_bRunning, true);
    if (pthread_create(&handle->id, nullptr, VornThreadFn, this) != 0) {
        delete handle;
        m_handle = nullptr;
        setRunning(m_bRunning, false);
    }
}

void VornThread::stop() {}

void VornThread::setWorkInfo(VornSmartPointer<VornWorkInformation> work)
{
    m_workInfo = work;
}

// A body that has returned leaves nothing to wait for, but its thread is
// joined here if nobody has yet, which takes no longer than the thread's
// last instructions.
int VornThread::wait(int timeoutMs)
{
    if (m_handle == nullptr) {
        return 0;
    }
    if (timeoutMs == -1 || !isRunning(m_bRunning)) {
        join(handleOf(m_handle));
        return 0;
    }
    std::vector<VornThread*> self{this};
    return wait(self, true, timeoutMs);
}

int VornThread::setPriority(t_Priority)
{
    return 0;
}

int VornThread::run()
{
    return 0;
}

int VornThread::run(VornWorkInformation&)
{
    return 0;
}

void VornThread::waitForThreadExit()
{
    wait(-1);
}

// The thread is detached as it is forgotten: it ends on its own, and its
// resources go with it.
void VornThread::kill()
{
    if (m_handle == nullptr) {
        return;
    }
    ThreadHandle& handle = handleOf(m_handle);
    if (!handle.bJoined) {
        pthread_cancel(handle.id);
    }
    detach(handle);
    cleanup();
}

void VornThread::setMarkForDeath()
{
    m_bMarkForDeath = true;
}

void VornThread::setMarkForKill()
{
    m_bMarkForKill = true;
    if (m_handle != nullptr) {
        detach(handleOf(m_handle));
    }
}

bool VornThread::isAlive()
{
    return m_handle != nullptr;
}

int VornThread::getExitCode() const
{
    return m_handle == nullptr ? -1 : __atomic_load_n(&m_exitCode, __ATOMIC_RELAXED);
}

const std::string& VornThread::getName() const
{
    return m_name;
}

void VornThread::setName(const std::string& name)
{
    m_name = name;
}

void* VornThread::getHandle()
{
    return m_handle;
}

unsigned long VornThread::getCurrentThreadId()
{
    return pthread_self();
}

void VornThread::cleanup()
{
    delete &handleOf(m_handle);
    m_handle = nullptr;
    setRunning(m_bRunning, false);
}

int VornThread::runBody()
{
    if (m_runnable) {
        return m_workInfo ? m_runnable->run(*m_workInfo) : m_runnable->run();
    }
    return m_workInfo ? run(*m_workInfo) : run();
}

// A body's exception ends the thread as a return of 0 would; cancellation
// is an exception too, and goes on so that the thread dies.
VSUPT_CATCHES_FORCED_UNWIND int VornThread::_run()
{
    int result = 0;
    try {
        result = runBody();
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (...) {
        result = 0;
    }
    announceDone(result);
    return result;
}

void VornThread::announceDone(int exitCode)
{
    notify(ThreadDone(exitCode));
}

// ---------------------------------------------------------------------------
// The entry function of every thread

namespace {

// The clean-up of a thread that dies by cancellation: its critical
// sections are freed. Under the address sanitizer, the frames that the
// cancellation unwound keep their guard zones marked, and the thread's own
// end would trip over them; they are cleared here.
void recoverCancelledThread()
{
    VornCriticalSectionRecoverFn(nullptr);
#if VSUPT_ADDRESS_SANITIZER
    __asan_handle_no_return();
#endif
}

}  // namespace

// The body is reached through virtual calls, which keeps the frames between
// here and the body unwindable wherever a cancel lands. This frame keeps no
// object in memory, so that a cancel landing here, before the body, leaves
// nothing behind either.
VSUPT_CATCHES_FORCED_UNWIND void* VornThreadFn(void* self)
{
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    VornThread* thread = static_cast<VornThread*>(self);
    int result;
    try {
        result = thread->_run();
    } catch (abi::__forced_unwind&) {
        recoverCancelledThread();
        throw;
    }
    if (!thread->m_bMarkForDeath) {
        // The last touch of the object: once it reads as ended, its owner
        // may delete it.
        __atomic_store_n(&thread->m_exitCode, result, __ATOMIC_RELAXED);
        setRunning(thread->m_bRunning, false);
        return self;
    }
    const bool known = thread->m_handle != nullptr;
    const pthread_t id = known ? *thread->m_handle : pthread_t();
    delete thread;
    if (known) {
        ExpiryEngine::announceEnd(id);
    }
    return nullptr;
}

void VSUPTInitVornThread()
{
    ExpiryEngine::installReaper();
}

// The timer module has stopped before this: what the engine does now is
// join threads that have already ended.
void VSUPTFinitVornThread()
{
    ExpiryEngine::shutDown();
}

// ---------------------------------------------------------------------------
// Waits over threads

namespace {

// The wait's time-out. A thread's end sets the event alone; an expiry also
// raises the flag.
class ThreadWaitTimer : public VornTimer {
public:
    explicit ThreadWaitTimer(std::atomic<bool>* expired) : m_pExpired(expired) {}
    ~ThreadWaitTimer() override { stop(); }

    void set() override
    {
        *m_pExpired = true;
        VornEvent::set();
        logLibraryRecord(9, "ThreadWaitTimer::set: timer expired");
    }

    void setJustEvent()
    {
        VornEvent::set();
        logLibraryRecord(9, "ThreadWaitTimer::setJustEvent: delay has not expired, just setting event");
    }

private:
    std::atomic<bool>* m_pExpired;
};

// Hears the ThreadDone of every awaited thread, on the ending thread.
class ThreadWaitDependent : public VornDependent {
public:
    ThreadWaitDependent(ThreadWaitTimer* timer, VornCriticalSectionObject* lock, std::atomic<int>* remaining)
        : m_pTimer(timer), m_pLock(lock), m_pThread(nullptr), m_pRemaining(remaining)
    {
    }

    // Only threads may be awaited: any other source throws std::bad_cast.
    void handleNotification(VornCollaborator& source, const VornNotification&) override
    {
        VornCriticalSection guard(*m_pLock, true);
        VornThread& thread = dynamic_cast<VornThread&>(source);
        m_pThread = &thread;
        logLibraryRecord(9, "ThreadWaitDependent::handleNotification: thread ", thread.getName(), " departed");
        if (*m_pRemaining > 0) {
            --*m_pRemaining;
        }
        m_pTimer->setJustEvent();
        logLibraryRecord(9, "ThreadWaitDependent::handleNotification: returning");
    }

    VornThread* departed() const { return m_pThread; }

private:
    ThreadWaitTimer* m_pTimer;
    VornCriticalSectionObject* m_pLock;
    VornThread* m_pThread;
    std::atomic<int>* m_pRemaining;
};

int positionOf(const std::vector<VornThread*>& threads, const VornThread* thread)
{
    for (std::size_t i = 0; i < threads.size(); ++i) {
        if (threads[i] == thread) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

}  // namespace

// The count and the flag are read by the waiter while the ending threads
// and the timer write them. The wake-up is not latched: a thread that ends
// while the waiter is awake lowers the count but wakes nobody, and the
// loop's test of the count or the time-out covers it.
int VornThread::wait(std::vector<VornThread*>& threads, bool waitAll, int timeoutMs)
{
    std::atomic<bool> expired{false};
    ThreadWaitTimer timer(&expired);
    std::atomic<int> remaining = waitAll ? static_cast<int>(threads.size()) : 1;
    VornCriticalSectionObject lock;
    ThreadWaitDependent dependent(&timer, &lock, &remaining);
    for (VornThread* thread : threads) {
        thread->addDependent(dependent);
    }
    if (timeoutMs != -1) {
        timer.start(static_cast<long>(timeoutMs), false);
    }
    int result = -4;
    while (remaining > 0) {
        timer.wait(-1);
        if (expired) {
            result = -2;
            break;
        }
        VornCriticalSection guard(lock, true);
        const int position = positionOf(threads, dependent.departed());
        if (position >= 0) {
            result = position;
        }
    }
    for (VornThread* thread : threads) {
        thread->removeDependent(dependent);
    }
    if (result != -2 && waitAll) {
        result = 0;
    }
    return result;
}

int VornThread::wait(int count, VornThread* threads, bool waitAll, int timeoutMs)
{
    std::vector<VornThread*> all;
    for (int i = 0; i < count; ++i) {
        all.push_back(&threads[i]);
    }
    return wait(all, waitAll, timeoutMs);
}

}  // namespace VornSupport
