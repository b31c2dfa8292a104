#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornMutexObject.h>

#include <linux/futex.h>
#include <sys/single_threaded.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <new>

using VornSupport::g_pCriticalSection;

// A thread may be cancelled asynchronously at any instruction, and its
// clean-up must then free exactly the locks it holds. Three rules make that
// so. The functions on the path of a first lock and a last unlock own no
// object with a destructor, so they have no exception table and a cancel
// unwinds through them wherever it lands. Every step that changes what the
// clean-up will find is a single store or a single atomic instruction, in
// the order the clean-up relies on; keepOrder() stops the compiler from
// moving those stores across each other. And while a thread takes or frees
// a lock, its thread-local record names that lock, so that the clean-up can
// settle it by its word.

namespace {

// The calling thread's locks: the list of those it holds, and the lock it is
// half-way through taking or freeing, which may be held and not on the list
// yet, or off the list and not yet free. Initial-exec, so that an access is
// one instruction; the library's thread-local data is small enough for the
// static space that glibc keeps for libraries loaded after start-up.
struct HeldLocks {
    LockImplementation* pHead;     // the lock taken last
    LockImplementation* pTaking;   // from before its word is taken until it is on the list
    LockImplementation* pFreeing;  // from before it leaves the list until its next holder is woken
};

thread_local HeldLocks t_heldLocks __attribute__((tls_model("initial-exec"))) = {nullptr, nullptr, nullptr};

void keepOrder()
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

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

// ---------------------------------------------------------------------------
// Platform calls: the thread count, cancellation, and the futex under the
// lock word.

// The thread library sets this false before it makes a second thread.
bool processHasOneThread()
{
    return __libc_single_threaded != 0;
}

// The thread library wants the old type by address. The address
// sanitizer's marks around such a local would stay on the stack of a thread
// killed before the type is deferred, so this one function goes unchecked.
__attribute__((noinline, no_sanitize("address"))) int deferCancellation()
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

// The kernel waits on 32 bits: the low half of the word, which holds the
// waiters' bit. A sleeper whose half matches another holder's id still sees
// the bit set, and that holder wakes a sleeper when it lets go.
std::uint32_t* futexOf(std::uintptr_t& word)
{
    auto* halves = reinterpret_cast<std::uint32_t*>(&word);
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? halves : halves + 1;
}

// Returns when woken, when the word no longer holds that value, or on a
// signal; the caller looks again in every case.
void sleepWhileWordIs(std::uintptr_t& word, std::uintptr_t value)
{
    syscall(SYS_futex, futexOf(word), FUTEX_WAIT_PRIVATE, static_cast<std::uint32_t>(value), nullptr, nullptr, 0);
}

// A private wake only names the address and reads nothing there, so it is
// safe on a lock that another thread has taken and destroyed meanwhile.
void wakeOneSleeper(std::uintptr_t& word)
{
    syscall(SYS_futex, futexOf(word), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

// ---------------------------------------------------------------------------
// The lock word is read and changed with the compiler's atomic built-ins,
// whose compare-and-swap returns the old value. std::atomic's takes the
// expected value by address, and under the address sanitizer such a local
// lives in a marked stack frame, which a thread killed inside it would leave
// marked.

std::uintptr_t readWord(const std::uintptr_t& word)
{
    return __atomic_load_n(&word, __ATOMIC_RELAXED);
}

void writeWord(std::uintptr_t& word, std::uintptr_t value)
{
    __atomic_store_n(&word, value, __ATOMIC_RELAXED);
}

std::uintptr_t exchangeWord(std::uintptr_t& word, std::uintptr_t value)
{
    return __atomic_exchange_n(&word, value, __ATOMIC_RELEASE);
}

// Puts desired in the word if it holds expected; returns what it held.
std::uintptr_t swapWordIf(std::uintptr_t& word, std::uintptr_t expected, std::uintptr_t desired)
{
    return __sync_val_compare_and_swap(&word, expected, desired);
}

}  // namespace

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
// LockImplementation: the lock word

LockImplementation::LockImplementation(bool)
    : m_lockWord(0), m_owner(0), m_pNext(nullptr), m_pPrev(nullptr), m_nLockCount(0)
{
}

LockImplementation::~LockImplementation()
{
    unwind();
}

// While the process has one thread, no other can touch the word, and a
// plain load and store do what the atomic instruction would at a fraction
// of its cost; the thread library does the same for its own mutexes.
inline bool LockImplementation::tryTakeWord(pthread_t self)
{
    if (processHasOneThread()) {
        if (readWord(m_lockWord) != 0) {
            return false;
        }
        writeWord(m_lockWord, self);
        return true;
    }
    return swapWordIf(m_lockWord, 0, self) == 0;
}

// A thread that has waited takes the word with the waiters' bit set, since
// others may still sleep on it; the bit then makes it wake one of them when
// it lets go.
void LockImplementation::waitAndTakeWord(pthread_t self)
{
    for (;;) {
        const std::uintptr_t seen = readWord(m_lockWord);
        if (seen == 0) {
            if (swapWordIf(m_lockWord, 0, self | kWaiters) == 0) {
                return;
            }
            continue;
        }
        if ((seen & kWaiters) == 0 && swapWordIf(m_lockWord, seen, seen | kWaiters) != seen) {
            continue;
        }
        sleepWhileWordIs(m_lockWord, seen | kWaiters);
    }
}

inline bool LockImplementation::wordHeldBy(pthread_t thread) const
{
    return (readWord(m_lockWord) & ~kWaiters) == thread;
}

inline void LockImplementation::freeWord()
{
    std::uintptr_t previous;
    if (processHasOneThread()) {
        previous = readWord(m_lockWord);
        writeWord(m_lockWord, 0);
    } else {
        previous = exchangeWord(m_lockWord, 0);
    }
    if ((previous & kWaiters) != 0) {
        wakeOneWaiter();
    }
}

void LockImplementation::wakeOneWaiter()
{
    wakeOneSleeper(m_lockWord);
}

// ---------------------------------------------------------------------------
// LockImplementation: the thread's list

// The new head links to the old one before the thread's record names it, so
// that the list read from the head is whole at every instruction.
inline void LockImplementation::pushOnThreadList()
{
    LockImplementation* head = t_heldLocks.pHead;
    m_pNext = head;
    m_pPrev = nullptr;
    if (head != nullptr) {
        head->m_pPrev = this;
    }
    keepOrder();
    t_heldLocks.pHead = this;
}

// One store takes the lock out of the chain read from the head: the link of
// the lock taken after it, or the head itself for the lock taken last. Locks
// may be given back in any order.
inline void LockImplementation::takeOffThreadList()
{
    if (m_pNext != nullptr) {
        m_pNext->m_pPrev = m_pPrev;
    }
    if (m_pPrev != nullptr) {
        m_pPrev->m_pNext = m_pNext;
    } else {
        t_heldLocks.pHead = m_pNext;
    }
    m_pPrev = nullptr;
    m_pNext = nullptr;
}

// ---------------------------------------------------------------------------
// LockImplementation: levels

void LockImplementation::lock()
{
    const pthread_t self = callingThread();
    if (ownedBy(self)) {
        setCount(lockCount() + 1);
        return;
    }
    takeFirstLevel(self);
}

void LockImplementation::takeFirstLevel(pthread_t self)
{
    t_heldLocks.pTaking = this;
    keepOrder();
    if (tryTakeWord(self)) {
        enterHeldLocks(self);
    } else {
        waitAndEnterHeldLocks(self);
    }
}

// The first level, once the word names the calling thread.
inline void LockImplementation::enterHeldLocks(pthread_t self)
{
    m_owner.store(self, std::memory_order_relaxed);
    setCount(1);
    pushOnThreadList();
    keepOrder();
    t_heldLocks.pTaking = nullptr;
}

// Out of line, so that the path of a free lock needs no stack frame.
__attribute__((noinline)) void LockImplementation::waitAndEnterHeldLocks(pthread_t self)
{
    waitAndTakeWord(self);
    enterHeldLocks(self);
}

bool LockImplementation::testAndSet()
{
    const pthread_t self = callingThread();
    if (ownedBy(self)) {
        setCount(lockCount() + 1);
        return true;
    }
    t_heldLocks.pTaking = this;
    keepOrder();
    if (!tryTakeWord(self)) {
        t_heldLocks.pTaking = nullptr;
        return false;
    }
    enterHeldLocks(self);
    return true;
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
    freeLastLevel();
    return true;
}

// The bookkeeping comes before the word is freed, so that only the holder
// ever touches the fields, and nothing reads the lock after it: another
// thread may take it and destroy it at once.
void LockImplementation::freeLastLevel()
{
    t_heldLocks.pFreeing = this;
    keepOrder();
    takeOffThreadList();
    m_owner.store(0, std::memory_order_relaxed);
    freeWord();
    keepOrder();
    t_heldLocks.pFreeing = nullptr;
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

// ---------------------------------------------------------------------------
// LockImplementation: the clean-up of a cancelled thread

// Frees a lock whose word names the calling thread, whatever its depth and
// links.
void LockImplementation::forgetHolder()
{
    m_pNext = nullptr;
    m_pPrev = nullptr;
    setCount(0);
    m_owner.store(0, std::memory_order_relaxed);
    freeWord();
}

// A lock the thread was taking or freeing when it died: its word says
// whether the thread still holds it. If not, the thread may have taken away
// the wake-up of a waiter, or died before waking the next holder, so one
// sleeper is woken in its place; a sleeper woken for nothing looks at the
// word and sleeps again.
void LockImplementation::settleHalfway(LockImplementation* lock)
{
    if (lock == nullptr) {
        return;
    }
    if (lock->wordHeldBy(callingThread())) {
        lock->forgetHolder();
    } else {
        lock->wakeOneWaiter();
    }
}

// The list first, each lock's link read while the lock is still held, then
// the lock the thread was half-way through taking or freeing, which may be
// on the list and freed already.
void LockImplementation::recoverHeldLocks()
{
    HeldLocks& held = t_heldLocks;
    LockImplementation* lock = held.pHead;
    held.pHead = nullptr;
    while (lock != nullptr) {
        LockImplementation* next = lock->m_pNext;
        lock->forgetHolder();
        lock = next;
    }
    settleHalfway(held.pTaking);
    settleHalfway(held.pFreeing);
    held.pTaking = nullptr;
    held.pFreeing = nullptr;
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
        dropLock();
        m_bLockFlag = other.m_bLockFlag;
        shareLockOf(other);
    }
    return *this;
}

VornCriticalSectionObject::~VornCriticalSectionObject()
{
    dropLock();
}

// The section's reference to its lock is taken and given back here and in
// createLock only.
void VornCriticalSectionObject::shareLockOf(const VornCriticalSectionObject& other)
{
    LockImplementation* source = other.m_pLock.load(std::memory_order_acquire);
    if (source != nullptr) {
        source->addRef();
        m_pLock.store(source, std::memory_order_release);
    }
}

void VornCriticalSectionObject::dropLock()
{
    if (LockImplementation* lock = m_pLock.exchange(nullptr)) {
        lock->release();
    }
}

// Creation allocates, and a thread killed inside the allocator would leave
// the allocator's lock taken for every thread; so it runs with cancellation
// deferred, and a kill that comes meanwhile takes effect once it is done.
void VornCriticalSectionObject::init()
{
    if (m_pLock.load(std::memory_order_acquire) != nullptr) {
        return;
    }
    const int previous = deferCancellation();
    const bool created = createLock();
    restoreCancellation(previous);
    if (!created) {
        throw std::bad_alloc();
    }
}

// False when memory ran out; nothing was made then.
bool VornCriticalSectionObject::createLock()
{
    try {
        // The global section guards the first use of all the others, so it
        // cannot guard its own: threads that reach it first at the same
        // moment each make a lock, and all but one give theirs up. The same
        // is done when the global section is gone, for a thread still
        // running while the library stops.
        if (this == g_pCriticalSection || g_pCriticalSection == nullptr) {
            LockImplementation* made = new LockImplementation(m_bLockFlag);
            made->addRef();
            LockImplementation* none = nullptr;
            if (!m_pLock.compare_exchange_strong(none, made, std::memory_order_acq_rel)) {
                made->release();
            }
            return true;
        }
        VornCriticalSection guard(*g_pCriticalSection, true);
        if (m_pLock.load(std::memory_order_relaxed) == nullptr) {
            LockImplementation* made = new LockImplementation(m_bLockFlag);
            made->addRef();
            m_pLock.store(made, std::memory_order_release);
        }
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

inline LockImplementation& VornCriticalSectionObject::implementation()
{
    LockImplementation* lock = m_pLock.load(std::memory_order_acquire);
    if (lock == nullptr) {
        init();
        lock = m_pLock.load(std::memory_order_acquire);
    }
    return *lock;
}

// The caller's inline path has found that this thread does not hold the
// lock, where the thread pointer tells.
void VornCriticalSectionObject::lockFirstLevel()
{
#ifdef VSUPT_THREAD_POINTER_IS_PTHREAD_SELF
    implementation().takeFirstLevel(callingThread());
#else
    implementation().lock();
#endif
}

void VornCriticalSectionObject::unlockLastLevel()
{
    implementation().unlock();
}

bool VornCriticalSectionObject::testAndSet()
{
    return implementation().testAndSet();
}

void VornCriticalSectionObject::unwind()
{
    implementation().unwind();
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
