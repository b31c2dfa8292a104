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
#ifndef VSUPT_VORNCRITICALSECTIONOBJECT_H
#define VSUPT_VORNCRITICALSECTIONOBJECT_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornSmartPointer.h>

#include <atomic>

class LockImplementation;

namespace VornSupport {

class VSUPT_API VornCriticalSectionObject {
public:
    VornCriticalSectionObject();
    // The flag is kept and copied but changes nothing.
    explicit VornCriticalSectionObject(bool lockFlag);
    VornCriticalSectionObject(const VornCriticalSectionObject& other);
    VornCriticalSectionObject& operator=(const VornCriticalSectionObject& other);
    ~VornCriticalSectionObject();

    void lock();
    void unlock();
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
    void shareLockOf(const VornCriticalSectionObject& other);

    std::atomic<VornSmartPointer<LockImplementation>*> m_pLock;
    bool m_bLockFlag;
};

}  // namespace VornSupport

#endif
