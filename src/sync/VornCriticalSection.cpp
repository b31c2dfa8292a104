#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornMutexObject.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

using VornSupport::g_pCriticalSection;

// ---------------------------------------------------------------------------
// LockThreadStorage

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

pthread_key_t LockThreadStorage::m_mutexListKey;
bool LockThreadStorage::m_keyCreated = false;

namespace {
LockThreadStorage g_lockThreadStorage;

// pthread_self() of the calling thread, read as the callers' inline path
// reads it.
pthread_t callingThread()
{
#ifdef VSUPT_THREAD_POINTER_IS_PTHREAD_SELF
    return reinterpret_cast<pthread_t>(__builtin_thread_pointer());
#else
    return pthread_self();
#endif
}

LockImplementation* heldLocksHead()
{
    return static_cast<LockImplementation*>(pthread_getspecific(LockThreadStorage::m_mutexListKey));
}

void setHeldLocksHead(LockImplementation* head)
{
    pthread_setspecific(LockThreadStorage::m_mutexListKey, head);
}

// A thread cancelled asynchronously in the middle of taking or freeing the
// mutex would leave it taken, or taken but off the list its clean-up walks.
// So those steps run with cancellation deferred, and a kill that comes
// meanwhile takes effect when the caller's type is given back, with the
// list exact. Threads that are not asynchronous pay one call.
int deferCancellation()
{
    int previous = PTHREAD_CANCEL_DEFERRED;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &previous);
    return previous;
}

void restoreCancellation(int previous)
{
    if (previous != PTHREAD_CANCEL_DEFERRED) {
        pthread_setcanceltype(previous, nullptr);
    }
}

template <class Step>
auto outOfCancellation(Step step) -> decltype(step())
{
    const int previous = deferCancellation();
    if constexpr (std::is_void_v<decltype(step())>) {
        step();
        restoreCancellation(previous);
    } else {
        const auto result = step();
        restoreCancellation(previous);
        return result;
    }
}
}  // namespace

LockThreadStorage::LockThreadStorage()
{
    createKey();
}

LockThreadStorage::~LockThreadStorage() = default;

void LockThreadStorage::createKey()
{
    if (!m_keyCreated) {
        pthread_key_create(&m_mutexListKey, nullptr);
        m_keyCreated = true;
    }
}

// ---------------------------------------------------------------------------
// LockBase

LockBase::~LockBase() = default;

long LockBase::addRef()
{
    return m_nRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

long LockBase::release()
{
    const long count = m_nRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (count == 0) {
        delete this;
    }
    return count;
}

// ---------------------------------------------------------------------------
// LockImplementation

LockImplementation::LockImplementation(bool)
    : m_owner(0), m_pNext(nullptr), m_pPrev(nullptr), m_nLockCount(0)
{
    // A lock may be made before the static key owner is constructed.
    LockThreadStorage::createKey();
    std::memset(&m_mutex, 0, sizeof m_mutex);
    pthread_mutex_init(&m_mutex, nullptr);
}

LockImplementation::~LockImplementation()
{
    unwind();
    pthread_mutex_destroy(&m_mutex);
}

inline void LockImplementation::takeOwnership(pthread_t self, int count)
{
    setCount(count);
    m_owner.store(self, std::memory_order_relaxed);
    pushOnThreadList();
}

inline void LockImplementation::pushOnThreadList()
{
    LockImplementation* head = heldLocksHead();
    if (head != nullptr) {
        head->m_pPrev = this;
    }
    setHeldLocksHead(this);
    m_pNext = head;
    m_pPrev = nullptr;
}

// Only a lock at the head of the list changes the key; one released out of
// order is unlinked from its neighbours alone.
inline void LockImplementation::takeOffThreadList()
{
    if (m_pNext != nullptr) {
        m_pNext->m_pPrev = m_pPrev;
    }
    if (m_pPrev != nullptr) {
        m_pPrev->m_pNext = m_pNext;
    } else {
        setHeldLocksHead(m_pNext);
    }
    m_pPrev = nullptr;
    m_pNext = nullptr;
}

// The bookkeeping comes before the mutex is let go, so that only the holder
// ever touches the fields.
inline void LockImplementation::releaseOwnership()
{
    m_owner.store(0, std::memory_order_relaxed);
    takeOffThreadList();
    pthread_mutex_unlock(&m_mutex);
}

void LockImplementation::lock()
{
    const pthread_t self = callingThread();
    if (ownedBy(self)) {
        setCount(lockCount() + 1);
        return;
    }
    pthread_mutex_lock(&m_mutex);
    takeOwnership(self, 1);
}

void LockImplementation::unlock()
{
    if (ownedBy(callingThread())) {
        giveBackOneLevel();
    }
}

// Returns true when that was the last level and the lock is free now.
bool LockImplementation::giveBackOneLevel()
{
    const int count = lockCount() - 1;
    setCount(count);
    if (count != 0) {
        return false;
    }
    releaseOwnership();
    return true;
}

bool LockImplementation::testAndSet()
{
    const pthread_t self = callingThread();
    if (ownedBy(self)) {
        setCount(lockCount() + 1);
        return true;
    }
    const int result = pthread_mutex_trylock(&m_mutex);
    if (result == EBUSY || result == EINVAL) {
        return false;
    }
    takeOwnership(self, 1);
    return true;
}

// Each level waits until the caller owns the lock, so a caller that does not
// hold it never returns. The count is not read again once the last level is
// given back: by then another thread may own the lock and its levels.
void LockImplementation::unwind()
{
    const pthread_t self = callingThread();
    while (lockCount() >= 1) {
        while (!ownedBy(self)) {
        }
        if (giveBackOneLevel()) {
            return;
        }
    }
}

void LockImplementation::recoverHeldLocks()
{
    LockImplementation* lock = heldLocksHead();
    setHeldLocksHead(nullptr);
    while (lock != nullptr) {
        LockImplementation* next = lock->m_pNext;
        lock->m_pNext = nullptr;
        lock->m_pPrev = nullptr;
        lock->setCount(0);
        lock->m_owner.store(0, std::memory_order_relaxed);
        pthread_mutex_unlock(&lock->m_mutex);
        lock = next;
    }
}

void VornCriticalSectionRecoverFn(void*)
{
    LockImplementation::recoverHeldLocks();
}

namespace VornSupport {

// ---------------------------------------------------------------------------
// VornCriticalSectionObject

VornCriticalSectionObject::VornCriticalSectionObject() : m_pLock(nullptr), m_bLockFlag(false) {}

VornCriticalSectionObject::VornCriticalSectionObject(bool lockFlag) : m_pLock(nullptr), m_bLockFlag(lockFlag) {}

VornCriticalSectionObject::VornCriticalSectionObject(const VornCriticalSectionObject& other)
    : m_pLock(nullptr), m_bLockFlag(other.m_bLockFlag)
{
    shareLockOf(other);
}

VornCriticalSectionObject& VornCriticalSectionObject::operator=(const VornCriticalSectionObject& other)
{
    if (this != &other) {
        delete m_pLock.exchange(nullptr);
        m_bLockFlag = other.m_bLockFlag;
        shareLockOf(other);
    }
    return *this;
}

VornCriticalSectionObject::~VornCriticalSectionObject()
{
    delete m_pLock.load(std::memory_order_acquire);
}

void VornCriticalSectionObject::shareLockOf(const VornCriticalSectionObject& other)
{
    const LockHolder* source = other.m_pLock.load(std::memory_order_acquire);
    if (source != nullptr) {
        m_pLock.store(new LockHolder(*source), std::memory_order_release);
    }
}

void VornCriticalSectionObject::init()
{
    if (m_pLock.load(std::memory_order_acquire) == nullptr) {
        createLock();
    }
}

void VornCriticalSectionObject::createLock()
{
    // The global section guards the first use of all the others, so it
    // cannot guard its own: threads that reach it first at the same moment
    // each make a lock, and all but one give theirs up. The same is done
    // when the global section is gone, for a thread still running while the
    // library stops.
    if (this == g_pCriticalSection || g_pCriticalSection == nullptr) {
        LockHolder* made = new LockHolder(new LockImplementation(m_bLockFlag));
        LockHolder* none = nullptr;
        if (!m_pLock.compare_exchange_strong(none, made, std::memory_order_acq_rel)) {
            delete made;
        }
        return;
    }
    VornCriticalSection guard(*g_pCriticalSection, true);
    if (m_pLock.load(std::memory_order_relaxed) == nullptr) {
        m_pLock.store(new LockHolder(new LockImplementation(m_bLockFlag)), std::memory_order_release);
    }
}

LockImplementation& VornCriticalSectionObject::implementation()
{
    init();
    return **m_pLock.load(std::memory_order_acquire);
}

void VornCriticalSectionObject::lockFirstLevel()
{
    LockImplementation& lock = implementation();
    outOfCancellation([&lock] { lock.lock(); });
}

void VornCriticalSectionObject::unlockLastLevel()
{
    LockImplementation& lock = implementation();
    outOfCancellation([&lock] { lock.unlock(); });
}

bool VornCriticalSectionObject::testAndSet()
{
    LockImplementation& lock = implementation();
    return outOfCancellation([&lock] { return lock.testAndSet(); });
}

void VornCriticalSectionObject::unwind()
{
    LockImplementation& lock = implementation();
    outOfCancellation([&lock] { lock.unwind(); });
}

int VornCriticalSectionObject::lockCount()
{
    return implementation().lockCount();
}

// ---------------------------------------------------------------------------
// VornMutexObject

VornMutexObject::VornMutexObject() : VornCriticalSectionObject(false) {}

VornMutexObject::~VornMutexObject() = default;

// ---------------------------------------------------------------------------
// VornCriticalSection

VornCriticalSection::VornCriticalSection(VornCriticalSectionObject& section, bool lockNow)
    : m_pObject(&section), m_bLocked(false)
{
    if (lockNow) {
        lock();
    }
}

VornCriticalSection::~VornCriticalSection() noexcept(false)
{
    unlock();
}

}  // namespace VornSupport
