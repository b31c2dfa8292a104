#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornLockFactory.h>
#include <vsupt/VornNoSuchElementException.h>

namespace VornSupport {

template <class Key, class Lock>
VornLockFactory<Key, Lock>::VornLockFactory() = default;

template <class Key, class Lock>
VornLockFactory<Key, Lock>::VornLockFactory(const VornLockFactory& other) : m_locks(other.m_locks)
{
}

template <class Key, class Lock>
VornLockFactory<Key, Lock>& VornLockFactory<Key, Lock>::operator=(const VornLockFactory& other)
{
    if (&m_locks == &other.m_locks) {
        return *this;
    }
    VornCriticalSection guard(m_lock, true);
    m_locks = other.m_locks;
    return *this;
}

template <class Key, class Lock>
VornLockFactory<Key, Lock>::~VornLockFactory() = default;

template <class Key, class Lock>
void VornLockFactory<Key, Lock>::createLock(const Key& name)
{
    VornCriticalSection guard(m_lock, true);
    m_locks.try_emplace(name);
}

template <class Key, class Lock>
bool VornLockFactory<Key, Lock>::exists(const Key& name)
{
    VornCriticalSection guard(m_lock, true);
    return m_locks.count(name) != 0;
}

template <class Key, class Lock>
bool VornLockFactory<Key, Lock>::getImpl(const Key& name, Lock*& lock)
{
    VornCriticalSection guard(m_lock, true);
    const auto entry = m_locks.find(name);
    if (entry == m_locks.end()) {
        return false;
    }
    lock = &entry->second;
    return true;
}

template <class Key, class Lock>
Lock& VornLockFactory<Key, Lock>::get(const Key& name)
{
    Lock* lock = nullptr;
    if (!getImpl(name, lock)) {
        throw VornNoSuchElementException(name);
    }
    return *lock;
}

template <class Key, class Lock>
std::vector<Key> VornLockFactory<Key, Lock>::getRegisteredLockNames()
{
    VornCriticalSection guard(m_lock, true);
    std::vector<Key> names;
    names.reserve(m_locks.size());
    for (const auto& entry : m_locks) {
        names.push_back(entry.first);
    }
    return names;
}

template class VornLockFactory<std::string, VornMutexObject>;
template class VornLockFactory<std::string, VornCriticalSectionObject>;
template class VornLockFactory<std::string, VornReadWriteLock>;

}  // namespace VornSupport
