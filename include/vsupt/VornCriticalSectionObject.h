// The library's recursive lock.
//
// A VornCriticalSectionObject is a recursive lock made on first use: the
// constructor only clears a pointer, so a static section is safe at any point
// of start-up, and the first lock, unlock, testAndSet, unwind or lockCount
// creates the real lock under g_pCriticalSection. Copies made after first use
// share that lock: they are one lock under several names. All operations may
// run on any thread; unlock by a thread that does not own the lock does
// nothing.
//
// Every lock a thread holds stands on that thread's own list of held locks.
// When a library thread is cancelled, its clean-up
// (VornCriticalSectionRecoverFn) walks the list and frees every lock it
// finds, whatever the recursion depth, so a killed holder never leaves a lock
// taken, wherever the kill lands.
//
// The road of one lock: the caller's inline code takes and gives back the
// inner levels of a lock its thread owns, with a compare and a count and no
// call. The first level and the last go into the library (one call each),
// which takes or frees the lock word with one atomic instruction, or a plain
// load and store while the process has one thread, and links or unlinks the
// lock on the thread's list. Only a lock that another thread waits for costs
// a system call: the waiter sleeps on the word's futex and the holder wakes
// it. Owner, count and links are written only by the holder.
//
// How this differs from a plain mutex under a thread-specific key, all for
// the cost of the first lock and the last unlock, none visible to callers:
// - the lock is a futex word holding its owner's pthread_self(), because a
//   thread killed just after taking a POSIX mutex cannot tell whether it
//   holds it, and the word tells;
// - the list's head lives in an initial-exec thread-local slot of the
//   library, not in a key, because a key costs a call per access; beside the
//   head the slot names the lock being taken or freed, so that the clean-up
//   of a thread killed half-way settles that lock by its word;
// - the section points at its lock directly and holds one reference to it,
//   not through a heap-allocated smart pointer, which spares the inline path
//   a load.
//
// The real lock, LockImplementation, stands here beside its section because
// callers take and give back recursion levels inline. Everything else
// happens inside the library.
#ifndef VSUPT_VORNCRITICALSECTIONOBJECT_H
#define VSUPT_VORNCRITICALSECTIONOBJECT_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornObjectBase.h>

#include <pthread.h>

#include <atomic>
#include <cstdint>

namespace VornSupport {
class VornCriticalSectionObject;
}

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

// A recursive lock by owner and count over a futex word, one for each
// distinct section. The word is the lock: 0 when free, else the holder's
// pthread_self() with the low bit set while other threads may sleep on it (a
// thread's id is the address of its aligned control block, so that bit is
// free). m_owner repeats the holder in a field of its own, set after the word
// is taken and cleared before it is freed, because a read of the word right
// after an atomic instruction on it waits for that instruction to finish.
// All fields but the word are written only by the holder; m_owner may be
// read by anyone, since it can equal a thread only if that thread put it
// there. Final, so that a section's release of its reference is a call the
// compiler knows cannot throw: the section's destructor then needs no
// exception table, and a thread killed inside it does not end the process.
class VSUPT_API LockImplementation final : public LockBase {
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
        if (!heldByCaller()) {
            return false;
        }
        const int count = lockCount();
        if (count < 2) {
            return false;
        }
        setCount(count - 1);
        return true;
    }

    // Frees every lock the calling thread holds or is half-way through
    // taking or freeing.
    static void recoverHeldLocks();

private:
    friend class VornSupport::VornCriticalSectionObject;

    static constexpr std::uintptr_t kWaiters = 1;

    // Where the thread pointer is not the thread's id, the inline path always
    // declines and the library decides with pthread_self().
    bool heldByCaller() const
    {
#ifdef VSUPT_THREAD_POINTER_IS_PTHREAD_SELF
        return ownedBy(reinterpret_cast<pthread_t>(__builtin_thread_pointer()));
#else
        return false;
#endif
    }

    bool ownedBy(pthread_t thread) const { return m_owner.load(std::memory_order_relaxed) == thread; }
    void setCount(int count) { m_nLockCount.store(count, std::memory_order_relaxed); }
    bool giveBackOneLevel();
    void takeFirstLevel(pthread_t self);
    void enterHeldLocks(pthread_t self);
    void waitAndEnterHeldLocks(pthread_t self);
    bool tryTakeWord(pthread_t self);
    void waitAndTakeWord(pthread_t self);
    bool wordHeldBy(pthread_t thread) const;
    void freeWord();
    void wakeOneWaiter();
    void freeLastLevel();
    void forgetHolder();
    static void settleHalfway(LockImplementation* lock);
    void pushOnThreadList();
    void takeOffThreadList();

    std::uintptr_t m_lockWord;  // changed only by atomic instructions
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
        LockImplementation* lock = m_pLock.load(std::memory_order_acquire);
        if (lock == nullptr || !lock->relockByOwner()) {
            lockFirstLevel();
        }
    }

    void unlock()
    {
        LockImplementation* lock = m_pLock.load(std::memory_order_acquire);
        if (lock == nullptr || !lock->unlockInnerLevel()) {
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
    void lockFirstLevel();
    void unlockLastLevel();
    void shareLockOf(const VornCriticalSectionObject& other);
    void dropLock();
    bool createLock();
    LockImplementation& implementation();

    // Holds one reference to the lock, or null before first use.
    std::atomic<LockImplementation*> m_pLock;
    bool m_bLockFlag;
};

}  // namespace VornSupport

#endif
