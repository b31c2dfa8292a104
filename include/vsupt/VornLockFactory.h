/// @class VornSupport::VornLockFactory
/// A registry of locks kept under names, so that unrelated parts of a program
/// meet on one lock by agreeing on its name.
///
/// The factory holds its locks by value in a map and never removes one, so a
/// reference from get stays good while the factory lives (assignment to the
/// factory excepted). Entries are destroyed with the factory, whoever holds
/// them. The map is guarded by the factory's own critical section for the
/// length of each map operation only: get hands out the lock without holding
/// anything, and the caller takes it afterwards. All operations but copying,
/// assignment and destruction may run on any thread.
///
/// Provided for string keys with VornMutexObject, VornCriticalSectionObject
/// and VornReadWriteLock. A copied factory holds copies of the locks: the
/// same read-write locks, and the same critical sections only for those that
/// had been used before the copy.
#ifndef VSUPT_VORNLOCKFACTORY_H
#define VSUPT_VORNLOCKFACTORY_H

#include <vsupt/VsuptExport.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornMutexObject.h>
#include <vsupt/VornReadWriteLock.h>

#include <map>
#include <string>
#include <vector>

namespace VornSupport {

template <class Key, class Lock>
class VSUPT_API VornLockFactory {
public:
    VornLockFactory();
    /// Copies the map under a section of its own; the source's is not taken.
    VornLockFactory(const VornLockFactory& other);
    /// Copies the locks by name.
    VornLockFactory& operator=(const VornLockFactory& other);
    virtual ~VornLockFactory();

    /// Adds a lock under the name unless there is one already, which stays.
    void createLock(const Key& name);
    /// Whether a lock of this name exists.
    bool exists(const Key& name);
    /// Leaves lock as it is when the name is unknown.
    bool getImpl(const Key& name, Lock*& lock);
    /// Throws VornNoSuchElementException with the name when it is unknown.
    Lock& get(const Key& name);
    /// In ascending order.
    std::vector<Key> getRegisteredLockNames();

private:
    std::map<Key, Lock> m_locks;
    VornCriticalSectionObject m_lock;
};

extern template class VSUPT_API VornLockFactory<std::string, VornMutexObject>;
extern template class VSUPT_API VornLockFactory<std::string, VornCriticalSectionObject>;
extern template class VSUPT_API VornLockFactory<std::string, VornReadWriteLock>;

}  // namespace VornSupport

#endif
