/// @class VornSupport::VornReadWriteLock
/// A handle on a POSIX read-write lock: many readers or one writer.
///
/// Unlike the critical section it has no owner, no recursion of its own and
/// no recovery: a thread cancelled while it holds the lock leaves it held.
/// The lock is made at once by the constructor, which counts its reference
/// under g_pCriticalSection, so a read-write lock can't be a static object of
/// a program that starts before the library. Copies are handles on the same
/// lock, and the last handle to go destroys it. Failures of the platform are
/// not reported to the caller; they go to the logger at level 1 with a status
/// of 2 for a time-out and 3 for anything else.
///
/// Assignment leaves the assigned handle unusable (it keeps the address of a
/// holder already freed, and the lock it held before stays referenced for
/// good): copy with the copy constructor instead. All operations but
/// assignment and destruction may run on any thread.
#ifndef VSUPT_VORNREADWRITELOCK_H
#define VSUPT_VORNREADWRITELOCK_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornSmartPointer.h>

class RwLockImplementation;

namespace VornSupport {

class VSUPT_API VornReadWriteLock {
public:
    /// Makes a new lock at once.
    VornReadWriteLock();
    /// A second handle on the other's lock.
    VornReadWriteLock(const VornReadWriteLock& other);
    /// Leaves this handle unusable; copy with the copy constructor instead.
    VornReadWriteLock& operator=(const VornReadWriteLock& other);
    /// The last handle to go destroys the lock.
    virtual ~VornReadWriteLock();

    /// Takes the lock for reading, waiting while a writer holds it.
    void readLock();
    /// Takes the lock for writing, waiting while anyone holds it.
    void writeLock();
    /// Gives back a read hold.
    void readUnLock();
    /// Gives back the write hold.
    void writeUnLock();
    /// Takes the lock for reading if no writer holds it; never waits. True
    /// when the lock was taken.
    bool tryReadLock();
    /// Takes the lock for writing if nobody holds it; never waits. True when
    /// the lock was taken.
    bool tryWriteLock();

private:
    using LockHolder = VornSmartPointer<RwLockImplementation>;

    LockHolder* m_pLock;
};

}  // namespace VornSupport

#endif
