#include "support/KillableBodies.h"
#include "support/TestAndSetElsewhere.h"

#include <vsupt/VornCriticalSection.h>
#include <vsupt/Module.h>
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornThread.h>

#include <gtest/gtest.h>

#include <pthread.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
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

// Threads that sleep on a held lock are let in one at a time as it is
// given back, however many there are.
TEST(VornCriticalSectionObjectTest, EveryThreadWaitingForALockGetsItInTurn)
{
    VornCriticalSectionObject section;
    section.lock();
    std::atomic<int> inside{0};
    std::atomic<int> through{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 6; ++i) {
        waiters.emplace_back([&] {
            VornCriticalSection guard(section, true);
            EXPECT_EQ(++inside, 1);
            std::this_thread::yield();
            --inside;
            ++through;
        });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(through, 0);
    section.unlock();
    for (auto& waiter : waiters) {
        waiter.join();
    }
    EXPECT_EQ(through, 6);
    EXPECT_TRUE(testAndSetElsewhere(section));
}

// While the process has one thread the lock is taken without atomic
// instructions; taken so, it must still keep out the threads made later.
TEST(VornCriticalSectionObjectTest, ALockTakenBeforeTheFirstThreadKeepsOutTheThreadsMadeLater)
{
    if (!__libc_single_threaded) {
        GTEST_SKIP() << "the process has made a thread already";
    }
    VornCriticalSectionObject section;
    section.lock();
    section.lock();
    section.unlock();
    EXPECT_FALSE(testAndSetElsewhere(section));
    std::atomic<bool> taken{false};
    std::thread waiter([&] {
        section.lock();
        taken = true;
        section.unlock();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(taken);
    section.unlock();
    waiter.join();
    EXPECT_TRUE(taken);
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

namespace {

struct Waiter {
    VornCriticalSectionObject& section;
    std::atomic<bool> started{false};
};

// Waits for a lock that another thread holds, until it is cancelled there.
void* waitUntilCancelled(void* argument)
{
    auto& waiter = *static_cast<Waiter*>(argument);
    pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
    pthread_cleanup_push(VornCriticalSectionRecoverFn, nullptr);
    waiter.started = true;
    waiter.section.lock();
    pthread_cleanup_pop(0);
    return nullptr;
}

}  // namespace

// The clean-up of a thread killed while it waits for a lock settles that
// lock by its word: the holder keeps it, and the next waiter still gets it.
TEST(VornCriticalSectionRecoverFnTest, AWaiterCancelledWhileItWaitsLeavesTheLockToItsHolder)
{
    VornCriticalSectionObject section;
    section.lock();
    Waiter waiter{section};
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, nullptr, waitUntilCancelled, &waiter), 0);
    while (!waiter.started) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
    EXPECT_EQ(section.lockCount(), 1);
    EXPECT_FALSE(testAndSetElsewhere(section));
    std::thread next([&] { VornCriticalSection guard(section, true); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    section.unlock();
    next.join();
    EXPECT_TRUE(testAndSetElsewhere(section));
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

// ---------------------------------------------------------------------------
// Killed at any instruction

namespace {

const int kStressSections = 3;
VornCriticalSectionObject g_stressSections[kStressSections];
// Who is inside each section. A killed holder leaves its mark behind, which
// the next holder overwrites.
std::atomic<unsigned> g_insideSection[kStressSections];
std::atomic<long> g_overlaps{0};
std::atomic<bool> g_stressStop{false};

// Marks the section as this thread's, lets time pass, and counts an overlap
// if another thread got in meanwhile.
void stayInside(int section, unsigned me)
{
    g_insideSection[section].store(me);
    for (int i = 0; i < 20; ++i) {
        if (g_insideSection[section].load() != me) {
            ++g_overlaps;
            return;
        }
    }
}

// Every way into a section, at random: levels taken and given back one by
// one, a try by another thread and by the owner, and an unwind. Keeps
// nothing to destroy and no local in memory, so it may be killed anywhere,
// under the address sanitizer too.
void useSomeSection(unsigned random, unsigned me)
{
    const int index = static_cast<int>(random % kStressSections);
    VornCriticalSectionObject& section = g_stressSections[index];
    switch ((random / kStressSections) % 4) {
    case 0:
        section.lock();
        section.lock();
        stayInside(index, me);
        section.unlock();
        section.unlock();
        break;
    case 1:
        if (section.testAndSet()) {
            stayInside(index, me);
            section.unlock();
        }
        break;
    case 2:
        section.lock();
        section.testAndSet();
        stayInside(index, me);
        section.unlock();
        section.unlock();
        break;
    default:
        section.lock();
        section.lock();
        stayInside(index, me);
        section.unwind();
        break;
    }
}

class SectionUser : public VornSupport::VornThread {
public:
    explicit SectionUser(std::atomic<long>& rounds) : m_rounds(rounds) {}
    int run() override
    {
        std::atomic<long>& rounds = m_rounds;
        const unsigned me = static_cast<unsigned>(pthread_self()) | 1u;
        unsigned random = me;
        while (!g_stressStop) {
            random = nextRandom(random);
            useSomeSection(random, me);
            ++rounds;
        }
        return 0;
    }

private:
    std::atomic<long>& m_rounds;
};

}  // namespace

// Threads are killed wherever they are in taking, holding or giving back
// sections, beside threads that are never killed: no two threads are ever
// inside one section, nobody waits for good, and every section is free at
// the end.
TEST(VornCriticalSectionStressTest, KilledUsersNeverLetTwoThreadsInNorLeaveASectionHeld)
{
    static std::atomic<long> survivorRounds{0};
    static std::atomic<long> victimRounds{0};
    std::vector<std::unique_ptr<SectionUser>> survivors;
    for (int i = 0; i < 2; ++i) {
        survivors.push_back(std::make_unique<SectionUser>(survivorRounds));
        survivors.back()->start();
    }
    unsigned seed = 7;
    const long kills = killVictims(
        std::chrono::seconds(15), [] { return std::make_unique<SectionUser>(victimRounds); },
        [&seed] { return std::chrono::microseconds(rand_r(&seed) % 2000); }, survivorRounds);
    ASSERT_NE(kills, -1) << "the survivors stood still for ten seconds";
    g_stressStop = true;
    for (auto& survivor : survivors) {
        survivor->waitForThreadExit();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(g_overlaps, 0);
    for (auto& section : g_stressSections) {
        EXPECT_EQ(section.lockCount(), 0);
        EXPECT_TRUE(testAndSetElsewhere(section));
    }
    EXPECT_GT(kills, 1000);
    EXPECT_GT(victimRounds, 0);
}
