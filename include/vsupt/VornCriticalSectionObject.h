// The library's recursive lock.
//
// A VornCriticalSectionObject is a recursive lock made on first use: the
// constructor only clears a pointer, so a static section is safe at any point
// of start-up, and the first lock, unlock, testAndSet, unwind or lockCount
// creates the real lock under g_pCriticalSection. Copies made after first use
// share that lock: they are one lock under several names.
//
// Every lock a thread holds stands on that thread's own list of held locks,
// kept in a thread-specific key. When a library thread is cancelled, its
// clean-up (VornCriticalSectionRecoverFn) walks the list and frees every lock
// it finds, whatever the recursion depth, so a killed holder never leaves a
// lock taken. All operations may run on any thread; unlock by a thread that
// does not own the lock does nothing.
//
// The real lock, LockImplementation, stands here beside its section because
// callers take and give back recursion levels inline: a level taken by the
// owner costs a compare and a count, with no call at all. Everything else
// happens inside the library.
#ifndef VSUPT_VORNCRITICALSECTIONOBJECT_H
#define VSUPT_VORNCRITICALSECTIONOBJECT_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectBase.h>
#include <vsupt/VornSmartPointer.h>

#include <pthread.h>

#include <atomic>
#include <cstdint>

// On x86-64 glibc, pthread_self() is the thread pointer itself, which can be
// read without a call.
#if defined(__x86_64__) && defined(__GLIBC__)
#define VSUPT_THREAD_POINTER_IS_PTHREAD_SELF 1
#endif

// Counts without any lock: the section that guards the library's counts is
// itself made of a LockImplementation, so the root's counting would recurse.
// LockBase and LockImplementation are exported because callers' inline code
// refers to them, and their type information must be one across the
// library's boundary.
class VSUPT_API LockBase : public VornSupport::VornObjectBase {
public:
    ~LockBase() override;
    long addRef() override;
    long release() override;
};

// A recursive lock by owner and count over a plain mutex, one for each
// distinct section. The fields are written only by the thread that holds
// the mutex; m_owner may be read by anyone, since it can equal a thread only
// if that thread put it there.
class VSUPT_API LockImplementation : public LockBase {
public:
    explicit LockImplementation(bool lockFlag);
    ~LockImplementation() override;

    void lock();
    void unlock();
    bool testAndSet();
    // Gives back every level; the caller must own the lock.
    void unwind();
    int lockCount() const { return m_nLockCount.load(std::memory_order_relaxed); }

    // Adds a level if the calling thread holds the lock already.
    bool relockByOwner()
    {
        if (!heldByCaller()) {
            return false;
        }
        setCount(lockCount() + 1);
        return true;
    }

    // Gives back a level if the calling thread holds the lock more than once,
    // so that the lock stays held.
    bool unlockInnerLevel()
    {
        if (!heldByCaller() || lockCount() < 2) {
            return false;
        }
        setCount(lockCount() - 1);
        return true;
    }

    // Frees every lock on the calling thread's list.
    static void recoverHeldLocks();

private:
    // Where the thread pointer is not the thread's id, the inline path always
    // declines and the library decides with pthread_self().
    bool heldByCaller() const
    {
#ifdef VSUPT_THREAD_POINTER_IS_PTHREAD_SELF
        return m_owner.load(std::memory_order_relaxed) == reinterpret_cast<pthread_t>(__builtin_thread_pointer());
#else
        return false;
#endif
    }

    bool ownedBy(pthread_t thread) const { return m_owner.load(std::memory_order_relaxed) == thread; }
    void setCount(int count) { m_nLockCount.store(count, std::memory_order_relaxed); }
    bool giveBackOneLevel();
    void takeOwnership(pthread_t self, int count);
    void releaseOwnership();
    void pushOnThreadList();
    void takeOffThreadList();

    pthread_mutex_t m_mutex;
    std::atomic<pthread_t> m_owner;
    LockImplementation* m_pNext;  // the lock this thread took before this one
    LockImplementation* m_pPrev;  // the lock this thread took after this one
    std::atomic<int32_t> m_nLockCount;
};

namespace VornSupport {

class VSUPT_API VornCriticalSectionObject {
public:
    VornCriticalSectionObject();
    // The flag is kept and copied but changes nothing.
    explicit VornCriticalSectionObject(bool lockFlag);
    VornCriticalSectionObject(const VornCriticalSectionObject& other);
    VornCriticalSectionObject& operator=(const VornCriticalSectionObject& other);
    ~VornCriticalSectionObject();

    void lock()
    {
        LockHolder* holder = m_pLock.load(std::memory_order_acquire);
        if (holder == nullptr || !(*holder)->relockByOwner()) {
            lockFirstLevel();
        }
    }

    void unlock()
    {
        LockHolder* holder = m_pLock.load(std::memory_order_acquire);
        if (holder == nullptr || !(*holder)->unlockInnerLevel()) {
            unlockLastLevel();
        }
    }

    // Takes the lock if it is free or already ours; never waits.
    bool testAndSet();
    // Gives back every recursion level at once. The caller must own the lock;
    // any other thread waits for ownership that never comes.
    void unwind();
    // The recursion depth as it stands, read without synchronisation.
    int lockCount();
    // Creates the lock on first use.
    void init();

private:
    using LockHolder = VornSmartPointer<LockImplementation>;

    void lockFirstLevel();
    void unlockLastLevel();
    void shareLockOf(const VornCriticalSectionObject& other);
    void createLock();
    LockImplementation& implementation();

    std::atomic<LockHolder*> m_pLock;
    bool m_bLockFlag;
};

}  // namespace VornSupport

#endif
