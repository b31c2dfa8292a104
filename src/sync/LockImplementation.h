// The real lock behind every VornCriticalSectionObject, and the thread key
// that holds each thread's list of held locks.
#ifndef VSUPT_SRC_SYNC_LOCKIMPLEMENTATION_H
#define VSUPT_SRC_SYNC_LOCKIMPLEMENTATION_H

#include <vsupt/VornObjectBase.h>

#include <pthread.h>

#include <atomic>
#include <cstdint>

// Counts without any lock: the section that guards the library's counts is
// itself made of a LockImplementation, so the root's counting would recurse.
class LockBase : public VornSupport::VornObjectBase {
public:
    ~LockBase() override;
    long addRef() override;
    long release() override;
};

// A recursive lock by owner and count over a plain mutex. The fields are
// written only by the thread that holds the mutex; m_owner may be read by
// anyone, since it can equal a thread only if that thread put it there.
class LockImplementation : public LockBase {
public:
    explicit LockImplementation(bool lockFlag);
    ~LockImplementation() override;

    void lock();
    void unlock();
    bool testAndSet();
    void unwind();
    int lockCount() const { return m_nLockCount.load(std::memory_order_relaxed); }

    // Frees every lock on the calling thread's list.
    static void recoverHeldLocks();

private:
    bool ownedByCaller() const { return m_owner.load(std::memory_order_relaxed) == pthread_self(); }
    void setCount(int count) { m_nLockCount.store(count, std::memory_order_relaxed); }
    void takeOwnership(int count);
    void releaseOwnership();
    void pushOnThreadList();
    void takeOffThreadList();

    pthread_mutex_t m_mutex;
    std::atomic<pthread_t> m_owner;
    LockImplementation* m_pNext;
    LockImplementation* m_pPrev;
    std::atomic<int32_t> m_nLockCount;
};

// Owner of the key whose per-thread value is the head of the thread's list
// of held locks (the lock taken last). The key is never deleted.
class LockThreadStorage {
public:
    LockThreadStorage();
    ~LockThreadStorage();

    static void createKey();

    static pthread_key_t m_mutexListKey;
    static bool m_keyCreated;
};

#endif
