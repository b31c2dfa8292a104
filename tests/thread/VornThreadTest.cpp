#include <vsupt/VornCriticalSection.h>
#include <vsupt/VornDependent.h>
#include <vsupt/VornEvent.h>
#include <vsupt/VornThread.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace VornSupport;
using Clock = std::chrono::steady_clock;

namespace {

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Spins until its flag is raised. Once started it touches nothing of its
// own object, so that it can be killed anywhere and outlive the object for
// the moment a cancellation takes to land.
std::atomic<bool> g_never{false};

class Spinner : public VornThread {
public:
    explicit Spinner(std::atomic<bool>& stop = g_never) : m_stop(stop) {}
    int run() override
    {
        std::atomic<bool>& stop = m_stop;
        started = true;
        while (!stop) {
        }
        return 7;
    }
    std::atomic<bool> started{false};

private:
    std::atomic<bool>& m_stop;
};

// Sleeps for a given time, then returns the code it was given.
class Sleeper : public VornThread {
public:
    Sleeper(int milliseconds, int code) : m_milliseconds(milliseconds), m_code(code) {}
    ~Sleeper() override { waitForThreadExit(); }
    int run() override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(m_milliseconds));
        return m_code;
    }

private:
    int m_milliseconds;
    int m_code;
};

class CountingBody : public VornThread {
public:
    int run() override
    {
        ++runs;
        return 3;
    }
    std::atomic<int> runs{0};
};

class Thrower : public VornThread {
public:
    int run() override { throw std::runtime_error("body failed"); }
};

// Records the ThreadDone it hears and the thread it heard it on.
class DoneListener : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification& notification) override
    {
        const auto* done = dynamic_cast<const VornThread::ThreadDone*>(&notification);
        code = done != nullptr ? done->m_exitCode : -100;
        heardOn = pthread_self();
        heard = true;
    }
    std::atomic<int> code{-100};
    std::atomic<pthread_t> heardOn{0};
    std::atomic<bool> heard{false};
};

void waitUntil(const std::atomic<bool>& flag)
{
    const auto start = Clock::now();
    while (!flag && secondsSince(start) < 10) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace

TEST(VornThreadTest, UnnamedThreadsAreNamedAfterTheBaseClass)
{
    Spinner thread;
    EXPECT_EQ(thread.getName(), "class VornSupport10VornThreadE");
    EXPECT_EQ(VornThread("worker").getName(), "worker");
}

TEST(VornThreadTest, ExitCodeIsMinusOneUntilStartedAndTheBodysResultAfterwards)
{
    CountingBody thread;
    EXPECT_EQ(thread.getExitCode(), -1);
    EXPECT_FALSE(thread.isAlive());
    thread.start();
    EXPECT_EQ(thread.wait(-1), 0);
    EXPECT_EQ(thread.getExitCode(), 3);
    EXPECT_TRUE(thread.isAlive());
}

TEST(VornThreadTest, StartingTwiceRunsTheBodyOnce)
{
    CountingBody thread;
    thread.start();
    thread.start();
    thread.wait(-1);
    thread.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(thread.runs, 1);
}

TEST(VornThreadTest, StartAfterKillRunsANewThread)
{
    static std::atomic<bool> stop{false};
    Spinner thread(stop);
    thread.start();
    waitUntil(thread.started);
    thread.setMarkForKill();
    thread.kill();
    EXPECT_FALSE(thread.isAlive());
    EXPECT_EQ(thread.getExitCode(), -1);
    thread.started = false;
    thread.start();
    waitUntil(thread.started);
    EXPECT_TRUE(thread.started);
    stop = true;
    thread.wait(-1);
    EXPECT_EQ(thread.getExitCode(), 7);
}

TEST(VornThreadTest, ABodyThatThrowsEndsWithCodeZeroAndTellsItsDependents)
{
    Thrower thread;
    DoneListener listener;
    thread.addDependent(listener);
    thread.start();
    thread.wait(-1);
    EXPECT_EQ(thread.getExitCode(), 0);
    EXPECT_TRUE(listener.heard);
    EXPECT_EQ(listener.code, 0);
}

TEST(VornThreadTest, DependentsHearThreadDoneOnTheEndingThread)
{
    CountingBody thread;
    DoneListener listener;
    thread.addDependent(listener);
    thread.start();
    const pthread_t id = *static_cast<pthread_t*>(thread.getHandle());
    thread.wait(-1);
    EXPECT_EQ(listener.code, 3);
    EXPECT_TRUE(pthread_equal(listener.heardOn, id));
}

TEST(VornThreadTest, TheBodyIsChosenByRunnableAndWorkInformation)
{
    struct Work : VornWorkInformation {};
    struct Runnable : VornThread::VornRunnable {
        int run() override { return 1; }
        int run(VornWorkInformation&) override { return 2; }
    };
    struct Body : VornThread {
        using VornThread::VornThread;
        int run() override { return 3; }
        int run(VornWorkInformation&) override { return 4; }
    };
    const auto exitCodeOf = [](bool withRunnable, bool withWork) {
        auto thread = withRunnable ? std::make_unique<Body>(VornSmartPointer<VornThread::VornRunnable>(new Runnable))
                                   : std::make_unique<Body>();
        if (withWork) {
            thread->setWorkInfo(new Work);
        }
        thread->start();
        thread->wait(-1);
        return thread->getExitCode();
    };
    EXPECT_EQ(exitCodeOf(true, false), 1);
    EXPECT_EQ(exitCodeOf(true, true), 2);
    EXPECT_EQ(exitCodeOf(false, false), 3);
    EXPECT_EQ(exitCodeOf(false, true), 4);
}

TEST(VornThreadTest, WaitingForAThreadNeverStartedReturnsAtOnce)
{
    Spinner thread;
    const auto start = Clock::now();
    EXPECT_EQ(thread.wait(-1), 0);
    EXPECT_EQ(thread.wait(5000), 0);
    EXPECT_LT(secondsSince(start), 0.5);
}

// The body is a runnable: a subclass's own part would be gone by the time
// the base destructor waits, while its body still ran on it.
TEST(VornThreadTest, DestroyingARunningThreadWaitsForItsBody)
{
    struct Nap : VornThread::VornRunnable {
        int run() override
        {
            started = true;
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            return 0;
        }
        std::atomic<bool> started{false};
    };
    Nap* nap = new Nap;
    const VornSmartPointer<VornThread::VornRunnable> body(nap);
    Clock::time_point start;
    {
        VornThread thread(body);
        thread.start();
        waitUntil(nap->started);
        start = Clock::now();
    }
    EXPECT_GE(secondsSince(start), 0.25);
}

TEST(VornThreadTest, AThreadMarkedForDeathDeletesItselfOnItsOwnThreadAfterThreadDone)
{
    struct Events {
        std::atomic<pthread_t> bodyThread{0};
        std::atomic<pthread_t> destructorThread{0};
        std::atomic<bool> heardDone{false};
        std::atomic<bool> doneBeforeDestructor{false};
        std::atomic<bool> destroyed{false};
    } events;
    struct Listener : VornDependent {
        explicit Listener(Events& e) : events(e) {}
        void handleNotification(VornCollaborator&, const VornNotification&) override { events.heardDone = true; }
        Events& events;
    } listener(events);
    struct SelfDeleting : VornThread {
        explicit SelfDeleting(Events& e) : events(e) {}
        ~SelfDeleting() override
        {
            events.destructorThread = pthread_self();
            events.doneBeforeDestructor = events.heardDone.load();
            events.destroyed = true;
        }
        int run() override
        {
            events.bodyThread = pthread_self();
            return 0;
        }
        Events& events;
    };
    auto* thread = new SelfDeleting(events);
    thread->addDependent(listener);
    thread->setMarkForDeath();
    thread->start();
    waitUntil(events.destroyed);
    ASSERT_TRUE(events.destroyed);
    EXPECT_TRUE(pthread_equal(events.bodyThread, events.destructorThread));
    EXPECT_TRUE(events.doneBeforeDestructor);
}

TEST(VornThreadTest, AThreadMarkedForKillBeforeStartIsCancelledByItsDestructor)
{
    auto thread = std::make_unique<Spinner>();
    thread->setMarkForKill();
    thread->start();
    waitUntil(thread->started);
    const auto start = Clock::now();
    thread.reset();
    EXPECT_LT(secondsSince(start), 1.0);
}

TEST(VornThreadTest, AKilledThreadLeavesTheCriticalSectionsItHeldFree)
{
    VornCriticalSectionObject outer;
    VornCriticalSectionObject inner;
    struct Holder : VornThread {
        Holder(VornCriticalSectionObject& a, VornCriticalSectionObject& b) : first(a), second(b) {}
        int run() override
        {
            first.lock();
            first.lock();
            second.lock();
            held = true;
            for (;;) {
            }
        }
        VornCriticalSectionObject& first;
        VornCriticalSectionObject& second;
        std::atomic<bool> held{false};
    } holder(outer, inner);
    holder.setMarkForKill();
    holder.start();
    waitUntil(holder.held);
    holder.kill();

    std::atomic<bool> bothFree{false};
    std::thread contender([&] {
        const auto start = Clock::now();
        while (secondsSince(start) < 10) {
            if (outer.testAndSet()) {
                const bool innerFree = inner.testAndSet();
                if (innerFree) {
                    inner.unlock();
                }
                outer.unlock();
                bothFree = innerFree;
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    contender.join();
    EXPECT_TRUE(bothFree);
}

TEST(VornThreadTest, PriorityAndStopChangeNothingInTheBaseClass)
{
    Sleeper thread(100, 5);
    thread.start();
    EXPECT_EQ(thread.setPriority(VornThread::high), 0);
    thread.stop();
    thread.wait(-1);
    EXPECT_EQ(thread.getExitCode(), 5);
}

// ---------------------------------------------------------------------------
// Waits over threads. The time-out counts whole seconds of the timers.

TEST(VornThreadWaitTest, WaitForAllReturnsZeroWhenAllEndBeforeTheTimeOut)
{
    Sleeper a(100, 0);
    Sleeper b(300, 0);
    std::vector<VornThread*> threads{&a, &b};
    a.start();
    b.start();
    EXPECT_EQ(VornThread::wait(threads, true, 5000), 0);
}

TEST(VornThreadWaitTest, WaitForAllReturnsMinusTwoWhenTheTimeOutComesFirst)
{
    Sleeper quick(100, 0);
    Sleeper slow(4000, 0);
    std::vector<VornThread*> threads{&quick, &slow};
    quick.start();
    slow.start();
    const auto start = Clock::now();
    EXPECT_EQ(VornThread::wait(threads, true, 2000), -2);
    const double waited = secondsSince(start);
    EXPECT_GT(waited, 0.9);
    EXPECT_LT(waited, 3.5);
}

TEST(VornThreadWaitTest, WaitForAnyReturnsThePositionOfTheThreadThatEnded)
{
    Sleeper slow(3000, 0);
    Sleeper quick(200, 0);
    std::vector<VornThread*> threads{&slow, &quick};
    slow.start();
    quick.start();
    EXPECT_EQ(VornThread::wait(threads, false, 10000), 1);
}

TEST(VornThreadWaitTest, AnEmptyWaitForAllReturnsZeroAtOnceAndAnEmptyWaitForAnyRunsToItsTimeOut)
{
    std::vector<VornThread*> none;
    EXPECT_EQ(VornThread::wait(none, true, 1000), 0);
    const auto start = Clock::now();
    EXPECT_EQ(VornThread::wait(none, false, 1000), -2);
    EXPECT_LT(secondsSince(start), 2.5);
}

TEST(VornThreadWaitTest, ATimeOutBelowOneSecondExpiresAlmostAtOnce)
{
    std::atomic<bool> stop{false};
    Spinner thread(stop);
    thread.start();
    const auto start = Clock::now();
    EXPECT_EQ(thread.wait(500), -2);
    EXPECT_LT(secondsSince(start), 0.5);
    stop = true;
    thread.waitForThreadExit();
}

TEST(VornThreadWaitTest, ATimeOutOfZeroWaitsForTheThread)
{
    Sleeper thread(1500, 0);
    thread.start();
    const auto start = Clock::now();
    EXPECT_EQ(thread.wait(0), 0);
    EXPECT_GT(secondsSince(start), 1.4);
}

TEST(VornThreadWaitTest, TheArrayFormWaitsForEveryElement)
{
    struct Nap : VornThread::VornRunnable {
        int run() override
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            return 0;
        }
    };
    VornSmartPointer<VornThread::VornRunnable> nap(new Nap);
    VornThread threads[2] = {VornThread(nap), VornThread(nap)};
    threads[0].start();
    threads[1].start();
    EXPECT_EQ(VornThread::wait(2, threads, true, 5000), 0);
}

// ---------------------------------------------------------------------------
// Waits over events

namespace {

class SetCounter : public VornDependent {
public:
    void handleNotification(VornCollaborator&, const VornNotification&) override { ++sets; }
    std::atomic<int> sets{0};
};

}  // namespace

TEST(VornEventWaitTest, AnEmptyWaitForAllReturnsZeroAtOnce)
{
    std::vector<VornEvent*> none;
    EXPECT_EQ(VornEvent::wait(none, true, -1), 0);
}

TEST(VornEventWaitTest, AWaitForAnyReturnsTheSignalledEventAndSetsTheOthersOnItsWayOut)
{
    VornEvent a;
    VornEvent b;
    SetCounter setsOfA;
    a.addDependent(setsOfA);
    std::vector<VornEvent*> events{&a, &b};
    std::thread signaller([&b] {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        b.set();
    });
    EXPECT_EQ(VornEvent::wait(events, false, -1), 1);
    signaller.join();
    EXPECT_GE(setsOfA.sets, 1);
    a.removeDependent(setsOfA);
}

TEST(VornEventWaitTest, AWaitForAllReturnsWhenEveryEventHasBeenSet)
{
    VornEvent a;
    VornEvent b;
    std::vector<VornEvent*> events{&a, &b};
    std::atomic<bool> done{false};
    std::thread signaller([&] {
        while (!done) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            a.set();
            b.set();
        }
    });
    EXPECT_EQ(VornEvent::wait(events, true, -1), 0);
    done = true;
    signaller.join();
}

// Each thread has ended before anyone waits for it; its stack must still be
// given back by the time its object goes. The first threads set up what
// stays (an allocator arena, the platform's cache of stacks); from then on
// the address space stays flat, where a stack kept would add 8 MiB a thread.
TEST(VornThreadSlowTest, EndedThreadsAreJoinedSoThatTheAddressSpaceStaysFlat)
{
    const auto runThreads = [](int count) {
        for (int cycle = 0; cycle < count; ++cycle) {
            auto thread = std::make_unique<CountingBody>();
            thread->start();
            while (thread->getExitCode() != 3) {
                std::this_thread::yield();
            }
            thread->waitForThreadExit();
        }
    };
    const auto addressSpaceBytes = [] {
        unsigned long pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        return pages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE));
    };
    runThreads(100);
    const unsigned long before = addressSpaceBytes();
    runThreads(20000);
    const unsigned long after = addressSpaceBytes();
    EXPECT_LT(after, before + (64ul << 20)) << "bytes of address space before and after 20000 threads";
}
