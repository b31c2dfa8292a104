// The library's signals while every thread of the process allocates: the
// main thread and two others take and free blocks of 16 B to 64 KiB without
// pause, with all signals open, while twenty repeating timers fire and
// self-deleting threads come and go. Any expiry or reap that created or
// joined a thread in a handler landing inside malloc would hang the process
// within seconds; a watchdog turns such a hang into a failure.
#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <gtest/gtest.h>

#include "support/ThreadCount.h"
#include "support/Watchdog.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace VornSupport;
using Clock = std::chrono::steady_clock;

namespace {

const auto kRunTime = std::chrono::seconds(30);
const auto kHangLimit = std::chrono::seconds(120);
const int kTimers = 20;

unsigned nextRandom(unsigned& state)
{
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

// Sizes spread evenly over the powers of two from 16 B to 64 KiB, so that
// both the small bins and the large ones, which take the arena's lock, are
// busy.
void churnOnce(std::vector<void*>& blocks, unsigned& random)
{
    void*& block = blocks[nextRandom(random) % blocks.size()];
    std::free(block);
    const std::size_t size = std::size_t{16} << (nextRandom(random) % 13);
    block = std::malloc(size);
    std::memset(block, 1, 16);
}

void churnUntil(const std::atomic<bool>& stop, unsigned seed)
{
    std::vector<void*> blocks(64, nullptr);
    unsigned random = seed;
    while (!stop.load(std::memory_order_relaxed)) {
        churnOnce(blocks, random);
    }
    for (void* block : blocks) {
        std::free(block);
    }
}

class CountingTimer : public VornTimer {
public:
    ~CountingTimer() override { stop(); }
    void set() override
    {
        ++m_fired;
        VornTimer::set();
    }
    int fired() const { return m_fired.load(); }

private:
    std::atomic<int> m_fired{0};
};

std::atomic<int> g_livingThreads{0};

class ShortLivedThread : public VornThread {
public:
    ShortLivedThread() { ++g_livingThreads; }
    ~ShortLivedThread() override { --g_livingThreads; }
    int run() override
    {
        std::vector<void*> blocks(8, nullptr);
        unsigned random = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(this));
        for (int i = 0; i < 200; ++i) {
            churnOnce(blocks, random);
        }
        for (void* block : blocks) {
            std::free(block);
        }
        return 0;
    }
};

void spawnUntil(const std::atomic<bool>& stop, std::atomic<int>& started)
{
    while (!stop.load()) {
        ShortLivedThread* thread = new ShortLivedThread;
        thread->setMarkForDeath();
        thread->start();
        ++started;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

int countLines(const char* path)
{
    std::ifstream file(path);
    std::string line;
    int lines = 0;
    while (std::getline(file, line)) {
        ++lines;
    }
    return lines;
}

}  // namespace

TEST(SignalUnderLoadStressTest, TimersFireAndEndedThreadsAreJoinedWhileEveryThreadAllocates)
{
    const int threadsBefore = countThreads();
    const int mappingsBefore = countLines("/proc/self/maps");
    Watchdog watchdog(kHangLimit, "the process hung under signal load\n");
    std::vector<std::unique_ptr<CountingTimer>> timers;
    for (int i = 0; i < kTimers; ++i) {
        timers.push_back(std::make_unique<CountingTimer>());
        timers.back()->start(1000, false);
    }
    const Clock::time_point start = Clock::now();

    std::atomic<bool> stop{false};
    std::atomic<int> started{0};
    std::thread churners[] = {std::thread(churnUntil, std::cref(stop), 1u), std::thread(churnUntil, std::cref(stop), 2u)};
    std::thread spawner(spawnUntil, std::cref(stop), std::ref(started));
    std::vector<void*> blocks(64, nullptr);
    unsigned random = 3;
    while (Clock::now() - start < kRunTime) {
        for (int i = 0; i < 1000; ++i) {
            churnOnce(blocks, random);
        }
    }
    stop = true;
    for (std::thread& churner : churners) {
        churner.join();
    }
    spawner.join();
    for (void* block : blocks) {
        std::free(block);
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    for (std::unique_ptr<CountingTimer>& timer : timers) {
        timer->stop();
    }

    for (int i = 0; i < kTimers; ++i) {
        EXPECT_GE(timers[i]->fired(), static_cast<int>(seconds * 0.6)) << "timer " << i;
        EXPECT_LE(timers[i]->fired(), static_cast<int>(seconds) + 2) << "timer " << i;
    }
    EXPECT_GT(started.load(), 1000);
    const Clock::time_point settling = Clock::now();
    while ((g_livingThreads.load() > 0 || countThreads() > threadsBefore + 1) &&
           Clock::now() - settling < std::chrono::seconds(20)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_EQ(g_livingThreads.load(), 0);
    // The watchdog is the one thread of the test left.
    EXPECT_LE(countThreads(), threadsBefore + 1);
    // A thread that ended unjoined keeps its stack and guard page mapped.
    EXPECT_LT(countLines("/proc/self/maps") - mappingsBefore, 100);
}
