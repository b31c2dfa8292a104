#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornCriticalSection.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSectionObject.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <atomic>
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

TEST(VornCriticalSectionObjectTest, OnlyTheOwnerTakesAndGivesBackLevelsAndUnwindGivesBackAll)
{
    VornCriticalSectionObject section;
    section.lock();
    section.lock();
    EXPECT_TRUE(section.testAndSet());
    std::thread([&] { section.unlock(); }).join();
    section.unlock();
    section.unlock();
    EXPECT_EQ(section.lockCount(), 1);
    EXPECT_FALSE(testAndSetElsewhere(section));
    section.lock();
    section.unwind();
    EXPECT_EQ(section.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(section));
    section.unwind();
    EXPECT_EQ(section.lockCount(), 0);
}

TEST(VornCriticalSectionObjectTest, CopiesShareTheLockOnlyOnceTheOriginalHasBeenUsed)
{
    VornCriticalSectionObject original;
    VornCriticalSectionObject early(original);
    original.lock();
    original.lock();
    VornCriticalSectionObject copy(original);
    VornCriticalSectionObject assigned;
    assigned = original;
    EXPECT_EQ(early.lockCount(), 0);
    EXPECT_TRUE(testAndSetElsewhere(early));
    EXPECT_EQ(copy.lockCount(), 2);
    EXPECT_EQ(assigned.lockCount(), 2);
    EXPECT_TRUE(copy.testAndSet());
    EXPECT_EQ(original.lockCount(), 3);
    copy.unwind();
    EXPECT_TRUE(testAndSetElsewhere(original));
}

// The last level given back lets a waiting thread in at once; unwind must
// not go on to count that thread's levels as its own.
TEST(VornCriticalSectionObjectTest, KeepsOutOtherThreadsAndUnwindsWhileTheyWait)
{
    VornCriticalSectionObject section;
    long counter = 0;
    auto work = [&] {
        for (int i = 0; i < 50000; ++i) {
            section.lock();
            {
                VornCriticalSection inner(section, true);
                ++counter;
            }
            section.lock();
            section.unwind();
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(counter, 100000);
    EXPECT_EQ(section.lockCount(), 0);
}

// Nothing guards the first use of the global section: threads racing to it
// must still end up with one lock, and no lock of theirs may be lost.
TEST(VornCriticalSectionObjectTest, ManyThreadsMayUseTheGlobalSectionFirst)
{
    using VornSupport::g_pCriticalSection;
    VornSupport::VSUPTFinitVornObjectBase();
    VornSupport::VSUPTInitVornObjectBase();
    std::atomic<bool> go{false};
    std::vector<VornCriticalSectionObject> sections(8);
    std::vector<std::thread> threads;
    for (auto& section : sections) {
        threads.emplace_back([&] {
            while (!go) {
            }
            VornCriticalSection guard(section, true);
        });
    }
    go = true;
    for (auto& thread : threads) {
        thread.join();
    }
    VornCriticalSection guard(*g_pCriticalSection, true);
    EXPECT_FALSE(testAndSetElsewhere(*g_pCriticalSection));
}

TEST(VornCriticalSectionTest, GuardGivesBackOnlyTheOneLevelItHolds)
{
    VornCriticalSectionObject section;
    section.lock();
    {
        VornCriticalSection guard(section, true);
        EXPECT_EQ(section.lockCount(), 2);
        VornCriticalSection unlockedEarly(section, true);
        unlockedEarly.unlock();
        VornCriticalSection neverLocked(section, false);
    }
    EXPECT_EQ(section.lockCount(), 1);
    section.unlock();
}

namespace {

struct HeldLocks {
    VornCriticalSectionObject first, middle, third, last;
    std::atomic<bool> holding{false};
};

// Takes four locks, the first twice, gives back the one in the middle of its
// list and the one taken last, and waits to be cancelled.
void* holdLocksUntilCancelled(void* argument)
{
    auto& held = *static_cast<HeldLocks*>(argument);
    pthread_cleanup_push(VornCriticalSectionRecoverFn, nullptr);
    held.first.lock();
    held.first.lock();
    held.middle.lock();
    held.third.lock();
    held.last.lock();
    held.middle.unlock();
    held.last.unlock();
    held.holding = true;
    for (;;) {
        pause();
    }
    pthread_cleanup_pop(0);
    return nullptr;
}

}  // namespace

// A lock its holder released, taken last or not, has left the thread's list:
// the recovery must not touch it, even while another thread holds it.
TEST(VornCriticalSectionRecoverFnTest, ACancelledHolderFreesWhatItHeldAndLeavesWhatItReleased)
{
    HeldLocks held;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, holdLocksUntilCancelled, &held), 0);
    while (!held.holding) {
        std::this_thread::yield();
    }
    held.middle.lock();
    held.last.lock();
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
    for (auto* freed : {&held.first, &held.third}) {
        EXPECT_EQ(freed->lockCount(), 0);
        EXPECT_TRUE(testAndSetElsewhere(*freed));
    }
    for (auto* kept : {&held.middle, &held.last}) {
        EXPECT_EQ(kept->lockCount(), 1);
        EXPECT_FALSE(testAndSetElsewhere(*kept));
        kept->unlock();
    }
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
