// Bounded runs under load: killed lock holders, timers changed from several
// threads. Each runs for about twenty seconds. Threads of the test that keep
// busy block the library's signals, so that expiries are handled by the
// test's main thread, which waits idle meanwhile.
#include <vsupt/VornCriticalSectionObject.h>
#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <gtest/gtest.h>

#include "support/KillableBodies.h"
#include "support/LibrarySignals.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using namespace VornSupport;
using Clock = std::chrono::steady_clock;

namespace {

const auto kRunTime = std::chrono::seconds(18);

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// ---------------------------------------------------------------------------
// Killed lock holders

const int kSections = 3;
VornCriticalSectionObject g_sections[kSections];
std::atomic<bool> g_holdersStop{false};

// Takes the sections in order, each zero to two times as the random value
// says, then gives them back. Touches nothing of its thread object and has
// nothing to destroy, so it may be killed anywhere.
void holdSomeSections(unsigned random)
{
    lockLevels(g_sections[0], random % 3);
    lockLevels(g_sections[1], (random / 3) % 3);
    lockLevels(g_sections[2], (random / 9) % 3);
    unlockLevels(g_sections[2], (random / 9) % 3);
    unlockLevels(g_sections[1], (random / 3) % 3);
    unlockLevels(g_sections[0], random % 3);
}

class LockHolder : public VornThread {
public:
    explicit LockHolder(std::atomic<long>& rounds) : m_rounds(rounds) {}
    int run() override
    {
        std::atomic<long>& rounds = m_rounds;
        unsigned random = static_cast<unsigned>(pthread_self()) | 1u;
        while (!g_holdersStop) {
            random = nextRandom(random);
            holdSomeSections(random);
            ++rounds;
        }
        return 0;
    }

private:
    std::atomic<long>& m_rounds;
};

}  // namespace

TEST(VornThreadStressTest, KilledLockHoldersNeverLeaveALockHeldNorStopTheOthers)
{
    static std::atomic<long> contenderRounds{0};
    static std::atomic<long> victimRounds{0};
    std::vector<std::unique_ptr<LockHolder>> contenders;
    for (int i = 0; i < 2; ++i) {
        contenders.push_back(std::make_unique<LockHolder>(contenderRounds));
        contenders.back()->start();
    }
    unsigned seed = 1;
    const long kills = killVictims(
        kRunTime, [] { return std::make_unique<LockHolder>(victimRounds); },
        [&seed] { return std::chrono::microseconds(rand_r(&seed) % 3000); }, contenderRounds);
    g_holdersStop = true;
    for (auto& contender : contenders) {
        contender->waitForThreadExit();
    }
    ASSERT_NE(kills, -1) << "the contenders stopped";
    // Give the last cancellation time to land.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    expectAllFree(g_sections, kSections);
    EXPECT_GT(kills, 1000);
    EXPECT_GT(victimRounds, 0);
}

// ---------------------------------------------------------------------------
// Timers started, stopped and reset from several threads

namespace {

// Keeps what the manipulating threads did to it and what the scans did.
class WatchedTimer : public VornTimer {
public:
    WatchedTimer() = default;
    ~WatchedTimer() override { stop(); }

    void set() override
    {
        VornTimer::set();
        std::lock_guard<std::mutex> hold(m_mutex);
        ++m_expiries;
        if (!m_bRunning && secondsSince(m_stoppedAt) > 0.5) {
            ++m_lateExpiries;
        }
    }

    // The test's own lock is never held across a call into the timer, since
    // a scan holds the timer manager's locks while it calls set().
    void startWatched(long milliseconds)
    {
        markRunning();
        start(milliseconds, false);
    }

    void stopWatched()
    {
        stop();
        std::lock_guard<std::mutex> hold(m_mutex);
        m_bRunning = false;
        m_stoppedAt = Clock::now();
    }

    void resetWatched()
    {
        markRunning();
        reset();
    }

    long expiries()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_expiries;
    }

    long lateExpiries()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        return m_lateExpiries;
    }

private:
    void markRunning()
    {
        std::lock_guard<std::mutex> hold(m_mutex);
        m_bRunning = true;
    }

    std::mutex m_mutex;
    bool m_bRunning = false;
    Clock::time_point m_stoppedAt = Clock::now();
    long m_expiries = 0;
    long m_lateExpiries = 0;
};

void sleepIdle(double seconds)
{
    std::mutex mutex;
    std::condition_variable never;
    std::unique_lock<std::mutex> hold(mutex);
    never.wait_for(hold, std::chrono::duration<double>(seconds), [] { return false; });
}

}  // namespace

TEST(VornTimerStressTest, TimersChangedFromSeveralThreadsFireWhileRunningAndNeverLongAfterStop)
{
    const int count = 50;
    const int steady = 10;  // left alone at one second, to check delivery
    std::vector<std::unique_ptr<WatchedTimer>> timers;
    for (int i = 0; i < count; ++i) {
        timers.push_back(std::make_unique<WatchedTimer>());
    }
    for (int i = 0; i < steady; ++i) {
        timers[i]->startWatched(1000);
    }
    std::atomic<bool> done{false};
    std::vector<std::thread> changers;
    for (int t = 0; t < 4; ++t) {
        changers.emplace_back([&, t] {
            blockLibrarySignals();
            unsigned seed = static_cast<unsigned>(t + 7);
            while (!done) {
                WatchedTimer& timer = *timers[steady + rand_r(&seed) % (count - steady)];
                switch (rand_r(&seed) % 3) {
                case 0:
                    timer.startWatched(1000 * (1 + rand_r(&seed) % 3));
                    break;
                case 1:
                    timer.stopWatched();
                    break;
                default:
                    timer.resetWatched();
                    break;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(rand_r(&seed) % 20));
            }
        });
    }
    const auto start = Clock::now();
    sleepIdle(std::chrono::duration<double>(kRunTime).count());
    done = true;
    for (auto& changer : changers) {
        changer.join();
    }
    const double ran = secondsSince(start);
    for (int i = 0; i < steady; ++i) {
        timers[i]->stopWatched();
        // One second plus scan latency each, and at most one lost at the end.
        EXPECT_GE(timers[i]->expiries(), static_cast<long>(ran / 1.5) - 1) << "timer " << i;
    }

    // All of them running for a last round: each fires within its interval.
    std::vector<long> before;
    for (auto& timer : timers) {
        before.push_back(timer->expiries());
        timer->startWatched(3000);
    }
    sleepIdle(4.5);
    for (int i = 0; i < count; ++i) {
        timers[i]->stopWatched();
        EXPECT_GT(timers[i]->expiries(), before[i]) << "timer " << i;
    }
    sleepIdle(1.5);
    for (int i = 0; i < count; ++i) {
        EXPECT_EQ(timers[i]->lateExpiries(), 0) << "timer " << i;
    }
}
