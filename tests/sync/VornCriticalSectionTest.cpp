#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornCriticalSection.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSectionObject.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using VornSupport::VornCriticalSection;
using VornSupport::VornCriticalSectionObject;

#ifdef VSUPT_THREAD_POINTER_IS_PTHREAD_SELF
// A lock's owner is told by the thread pointer without a call; that holds
// only while the thread pointer is what pthread_self() gives.
TEST(VornCriticalSectionObjectTest, TheThreadPointerIsTheThreadsId)
{
    auto threadPointer = [] { return reinterpret_cast<pthread_t>(__builtin_thread_pointer()); };
    EXPECT_EQ(threadPointer(), pthread_self());
    std::thread([&] { EXPECT_EQ(threadPointer(), pthread_self()); }).join();
}
#endif

TEST(VornCriticalSectionObjectTest, LockCountOfAFreshSectionIsZero)
{
    VornCriticalSectionObject section;
    EXPECT_EQ(section.lockCount(), 0);
}

TEST(VornCriticalSectionObjectTest, RecursiveLockNeedsAsManyUnlocks)
{
    VornCriticalSectionObject section;
    section.lock();
    section.lock();
    section.lock();
    section.unlock();
    section.unlock();
    EXPECT_EQ(section.lockCount(), 1);
    EXPECT_FALSE(testAndSetElsewhere(section));
    section.unlock();
    EXPECT_EQ(section.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(section));
}

TEST(VornCriticalSectionObjectTest, TestAndSetByTheOwnerAddsALevel)
{
    VornCriticalSectionObject section;
    section.lock();
    EXPECT_TRUE(section.testAndSet());
    EXPECT_EQ(section.lockCount(), 2);
    section.unlock();
    EXPECT_FALSE(testAndSetElsewhere(section));
    section.unlock();
    EXPECT_TRUE(testAndSetElsewhere(section));
}

TEST(VornCriticalSectionObjectTest, UnlockByANonOwnerChangesNothing)
{
    VornCriticalSectionObject section;
    section.lock();
    std::thread([&] { section.unlock(); }).join();
    EXPECT_EQ(section.lockCount(), 1);
    EXPECT_FALSE(testAndSetElsewhere(section));
    section.unlock();
}

TEST(VornCriticalSectionObjectTest, CopyBeforeFirstUseIsAnIndependentLock)
{
    VornCriticalSectionObject original;
    VornCriticalSectionObject copy(original);
    original.lock();
    EXPECT_EQ(copy.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(copy));
    original.unlock();
}

TEST(VornCriticalSectionObjectTest, CopyAfterFirstUseIsTheSameLock)
{
    VornCriticalSectionObject original;
    original.lock();
    original.lock();
    VornCriticalSectionObject copy(original);
    VornCriticalSectionObject assigned;
    assigned = original;
    EXPECT_EQ(copy.lockCount(), 2);
    EXPECT_EQ(assigned.lockCount(), 2);
    EXPECT_TRUE(copy.testAndSet());
    EXPECT_EQ(original.lockCount(), 3);
    copy.unwind();
    EXPECT_TRUE(testAndSetElsewhere(original));
}

TEST(VornCriticalSectionObjectTest, UnwindFreesAllLevelsAtOnce)
{
    VornCriticalSectionObject section;
    for (int i = 0; i < 5; ++i) {
        section.lock();
    }
    section.unwind();
    EXPECT_EQ(section.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(section));
    section.unwind();
    EXPECT_EQ(section.lockCount(), 0);
}

// The last level given back lets a waiting thread in at once; unwind must
// not go on to count that thread's levels as its own.
TEST(VornCriticalSectionObjectTest, UnwindReturnsWhileAnotherThreadTakesTheLock)
{
    VornCriticalSectionObject section;
    auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            section.lock();
            section.lock();
            section.unwind();
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(section.lockCount(), 0);
}

TEST(VornCriticalSectionObjectTest, KeepsOutOtherThreadsWhileHeld)
{
    VornCriticalSectionObject section;
    long counter = 0;
    auto work = [&] {
        for (int i = 0; i < 100000; ++i) {
            VornCriticalSection outer(section, true);
            VornCriticalSection inner(section, true);
            ++counter;
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(counter, 200000);
}

// Nothing guards the first use of the global section: threads racing to it
// must still end up with one lock, and no lock of theirs may be lost.
TEST(VornCriticalSectionObjectTest, ManyThreadsMayUseTheGlobalSectionFirst)
{
    using VornSupport::g_pCriticalSection;
    VornSupport::VSUPTFinitVornObjectBase();
    VornSupport::VSUPTInitVornObjectBase();
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    std::vector<VornCriticalSectionObject> sections(8);
    for (auto& section : sections) {
        threads.emplace_back([&] {
            while (!go) {
            }
            section.lock();
            section.unlock();
        });
    }
    go = true;
    for (auto& thread : threads) {
        thread.join();
    }
    g_pCriticalSection->lock();
    EXPECT_FALSE(testAndSetElsewhere(*g_pCriticalSection));
    g_pCriticalSection->unlock();
}

TEST(VornCriticalSectionTest, GuardGivesBackExactlyOneLevel)
{
    VornCriticalSectionObject section;
    section.lock();
    {
        VornCriticalSection guard(section, true);
        EXPECT_EQ(section.lockCount(), 2);
    }
    EXPECT_EQ(section.lockCount(), 1);
    section.unlock();
}

TEST(VornCriticalSectionTest, GuardUnlockedEarlyGivesBackNothingTwice)
{
    VornCriticalSectionObject section;
    section.lock();
    {
        VornCriticalSection guard(section, true);
        guard.unlock();
        EXPECT_EQ(section.lockCount(), 1);
    }
    EXPECT_EQ(section.lockCount(), 1);
    section.unlock();
}

TEST(VornCriticalSectionTest, GuardBuiltWithoutLockingTouchesNothing)
{
    VornCriticalSectionObject section;
    section.lock();
    { VornCriticalSection guard(section, false); }
    EXPECT_EQ(section.lockCount(), 1);
    section.unlock();
}

TEST(VornCriticalSectionTest, GuardRelockedIsGivenBackOnce)
{
    VornCriticalSectionObject section;
    {
        VornCriticalSection guard(section, true);
        guard.unlock();
        guard.lock();
        EXPECT_EQ(section.lockCount(), 1);
    }
    EXPECT_EQ(section.lockCount(), 0);
}

TEST(VornCriticalSectionRecoverFnTest, FreesEveryHeldLockWhateverTheDepth)
{
    VornCriticalSectionObject first;
    VornCriticalSectionObject second;
    std::thread([&] {
        first.lock();
        first.lock();
        second.lock();
        VornCriticalSectionRecoverFn(nullptr);
    }).join();
    EXPECT_EQ(first.lockCount(), 0);
    EXPECT_EQ(second.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(first));
    EXPECT_TRUE(testAndSetElsewhere(second));
}

// A lock released out of order leaves the thread's list; the recovery must
// then not touch it, even while another thread holds it.
TEST(VornCriticalSectionRecoverFnTest, LeavesALockReleasedOutOfOrderAlone)
{
    VornCriticalSectionObject l1;
    VornCriticalSectionObject l2;
    VornCriticalSectionObject l3;
    std::atomic<int> step{0};
    std::thread holder([&] {
        l1.lock();
        l2.lock();
        l3.lock();
        l2.unlock();
        step = 1;
        while (step != 2) {
            std::this_thread::yield();
        }
        VornCriticalSectionRecoverFn(nullptr);
    });
    while (step != 1) {
        std::this_thread::yield();
    }
    l2.lock();
    step = 2;
    holder.join();
    EXPECT_EQ(l2.lockCount(), 1);
    EXPECT_FALSE(testAndSetElsewhere(l2));
    EXPECT_TRUE(testAndSetElsewhere(l1));
    EXPECT_TRUE(testAndSetElsewhere(l3));
    l2.unlock();
}

TEST(VornCriticalSectionRecoverFnTest, FindsNothingAfterOrderlyReleases)
{
    VornCriticalSectionObject l1;
    VornCriticalSectionObject l2;
    VornCriticalSectionObject l3;
    std::thread([&] {
        l1.lock();
        l2.lock();
        l3.lock();
        l2.unlock();
        l3.unlock();
        l1.unlock();
        l1.lock();
        l1.unlock();
        VornCriticalSectionRecoverFn(nullptr);
    }).join();
    EXPECT_TRUE(testAndSetElsewhere(l1));
    EXPECT_TRUE(testAndSetElsewhere(l2));
    EXPECT_TRUE(testAndSetElsewhere(l3));
}

namespace {

struct CancelledHolder {
    VornCriticalSectionObject* first;
    VornCriticalSectionObject* second;
    std::atomic<bool> holding{false};
};

void* holdLocksUntilCancelled(void* argument)
{
    auto* holder = static_cast<CancelledHolder*>(argument);
    pthread_cleanup_push(VornCriticalSectionRecoverFn, nullptr);
    holder->first->lock();
    holder->first->lock();
    holder->second->lock();
    holder->holding = true;
    for (;;) {
        pause();
    }
    pthread_cleanup_pop(0);
    return nullptr;
}

}  // namespace

TEST(VornCriticalSectionRecoverFnTest, ACancelledHolderLeavesItsLocksFree)
{
    VornCriticalSectionObject first;
    VornCriticalSectionObject second;
    CancelledHolder holder{&first, &second};
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, holdLocksUntilCancelled, &holder), 0);
    while (!holder.holding) {
        std::this_thread::yield();
    }
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
    EXPECT_EQ(first.lockCount(), 0);
    EXPECT_EQ(second.lockCount(), 0);
    first.lock();
    second.lock();
    second.unlock();
    first.unlock();
}

// The section is never destroyed: dropping a lock that a dead thread still
// holds would wait for that thread forever. The check runs on this thread,
// since a new thread may be given the dead one's id.
TEST(VornCriticalSectionRecoverFnTest, ABodyThatReturnsKeepsItsLocks)
{
    static VornCriticalSectionObject* section = new VornCriticalSectionObject();
    std::thread([&] { section->lock(); }).join();
    EXPECT_EQ(section->lockCount(), 1);
    EXPECT_FALSE(section->testAndSet());
}
