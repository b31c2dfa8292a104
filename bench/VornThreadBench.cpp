// The costs of threads and timers to a service: a thread started and
// joined, a self-deleting thread's whole life up to its reaping, and how
// late a timer fires against the second it asked for.
#include "BenchRatio.h"

#include <vsupt/VornThread.h>
#include <vsupt/VornTimer.h>

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace {

using namespace VornSupport;
using Clock = std::chrono::steady_clock;

const vsupt_bench::RatioRegistration ratios{
    {"thread start + wait(-1)", "BM_VornThread_StartWait<VornThread>/real_time",
     "BM_Pthread_CreateJoin<emptyBody>/real_time", 1.5},
    {"thread start + wait(-1), body of 50 us", "BM_VornThread_StartWait<BusyThread>/real_time",
     "BM_Pthread_CreateJoin<busyBody>/real_time", 1.5},
    {"self-deleting thread, start to reaped (read as a ratio to create+join)", "BM_VornThread_SelfDeletingLife/real_time",
     "BM_Pthread_CreateJoin<emptyBody>/real_time", 0},
};

void* emptyBody(void*)
{
    return nullptr;
}

// A body long enough that wait(-1) finds it running and joins it; a body
// that has already returned when wait(-1) comes is not joined.
void* busyBody(void*)
{
    const auto end = Clock::now() + std::chrono::microseconds(50);
    while (Clock::now() < end) {
    }
    return nullptr;
}

class BusyThread : public VornThread {
public:
    int run() override
    {
        busyBody(nullptr);
        return 0;
    }
};

template <void* (*Body)(void*)>
void BM_Pthread_CreateJoin(benchmark::State& state)
{
    for (auto _ : state) {
        pthread_t thread;
        pthread_create(&thread, nullptr, Body, nullptr);
        pthread_join(thread, nullptr);
    }
}
BENCHMARK_TEMPLATE(BM_Pthread_CreateJoin, emptyBody)->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pthread_CreateJoin, busyBody)->UseRealTime();

template <class Thread>
void BM_VornThread_StartWait(benchmark::State& state)
{
    for (auto _ : state) {
        Thread thread;
        thread.start();
        thread.wait(-1);
    }
}
BENCHMARK_TEMPLATE(BM_VornThread_StartWait, VornThread)->UseRealTime();
BENCHMARK_TEMPLATE(BM_VornThread_StartWait, BusyThread)->UseRealTime();

// The life is timed to the deletion of the object; its join, raised by
// SIGUSR2, follows while the next life has begun and competes with it.
std::mutex g_lifeMutex;
std::condition_variable g_lifeEnded;
bool g_ended = false;

class SelfDeleting : public VornThread {
public:
    ~SelfDeleting() override
    {
        std::lock_guard<std::mutex> hold(g_lifeMutex);
        g_ended = true;
        g_lifeEnded.notify_one();
    }
};

void BM_VornThread_SelfDeletingLife(benchmark::State& state)
{
    for (auto _ : state) {
        {
            std::lock_guard<std::mutex> hold(g_lifeMutex);
            g_ended = false;
        }
        auto* thread = new SelfDeleting;
        thread->setMarkForDeath();
        thread->start();
        std::unique_lock<std::mutex> hold(g_lifeMutex);
        g_lifeEnded.wait(hold, [] { return g_ended; });
    }
}
BENCHMARK(BM_VornThread_SelfDeletingLife)->UseRealTime();

// A one-shot timer of one second, started just after the clock's second has
// turned, so that its expiry second begins one second later; the time
// reported is how far past that moment its handler began. The benchmark's
// thread sleeps while the timer runs.
class LatencyTimer : public VornTimer {
public:
    void set() override
    {
        const Clock::time_point firedAt = Clock::now();
        VornTimer::set();
        std::lock_guard<std::mutex> hold(m_mutex);
        m_firedAt = firedAt;
        m_fired = true;
        m_changed.notify_one();
    }

    double secondsUntilFired(Clock::time_point started)
    {
        std::unique_lock<std::mutex> hold(m_mutex);
        m_changed.wait(hold, [this] { return m_fired; });
        m_fired = false;
        return std::chrono::duration<double>(m_firedAt - started).count();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Clock::time_point m_firedAt;
    bool m_fired = false;
};

void sleepUntilTheSecondTurns()
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto intoSecond = sinceEpoch - std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    std::this_thread::sleep_for(std::chrono::seconds(1) - intoSecond);
}

void BM_VornTimer_ExpiryLatency(benchmark::State& state)
{
    LatencyTimer timer;
    std::vector<double> late;
    for (auto _ : state) {
        sleepUntilTheSecondTurns();
        const Clock::time_point started = Clock::now();
        timer.start(1000, true);
        const double fired = timer.secondsUntilFired(started);
        late.push_back(fired - 1.0);
        state.SetIterationTime(fired);
    }
    std::sort(late.begin(), late.end());
    state.counters["late_min_ms"] = late.front() * 1000;
    state.counters["late_median_ms"] = late[late.size() / 2] * 1000;
    state.counters["late_max_ms"] = late.back() * 1000;
}
BENCHMARK(BM_VornTimer_ExpiryLatency)->UseManualTime()->Iterations(10);

}  // namespace
