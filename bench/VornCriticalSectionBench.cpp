// The library's recursive lock against std::recursive_mutex and a bare POSIX
// mutex: lock+unlock of a free lock, re-lock+unlock by the owner, and two
// threads taking turns on one lock.
//
// The thread library takes and frees a mutex with plain loads and stores
// while the process has one thread, and with atomic instructions, several
// times dearer, once it has made a second; the section does the same. So
// lock+unlock of a free lock is measured in both states: first in a process
// that has made no thread yet (a command-line tool), then in one that has (a
// service). A process never goes back to one thread, so the benchmarks of
// the first state run before any other and refuse to run once a thread has
// been made: run them without --benchmark_enable_random_interleaving.
#include "BenchRatio.h"

#include <vsupt/VornCriticalSectionObject.h>

#include <pthread.h>
#include <sys/single_threaded.h>

#include <mutex>
#include <thread>

namespace {

using VornSupport::VornCriticalSectionObject;

enum class Process { OneThread, Threaded };

// Brings the process into the state the benchmark measures, or skips it if
// that state is past.
template <Process process>
bool inState(benchmark::State& state)
{
    if (process == Process::Threaded && __libc_single_threaded) {
        std::thread([] {}).join();
    }
    if (process == Process::OneThread && !__libc_single_threaded) {
        state.SkipWithError("the process has made a thread already");
        return false;
    }
    return true;
}

template <Process process>
void BM_VornCriticalSection_LockUnlock(benchmark::State& state)
{
    VornCriticalSectionObject section;
    section.init();  // made on first use: keep that out of the loop
    if (!inState<process>(state)) {
        return;
    }
    for (auto _ : state) {
        section.lock();
        section.unlock();
    }
}

template <Process process>
void BM_RecursiveMutex_LockUnlock(benchmark::State& state)
{
    std::recursive_mutex mutex;
    if (!inState<process>(state)) {
        return;
    }
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}

template <Process process>
void BM_PthreadMutex_LockUnlock(benchmark::State& state)
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    if (inState<process>(state)) {
        for (auto _ : state) {
            pthread_mutex_lock(&mutex);
            pthread_mutex_unlock(&mutex);
        }
    }
    pthread_mutex_destroy(&mutex);
}

BENCHMARK_TEMPLATE(BM_VornCriticalSection_LockUnlock, Process::OneThread)->Name("BM_VornCriticalSection_LockUnlock");
BENCHMARK_TEMPLATE(BM_RecursiveMutex_LockUnlock, Process::OneThread)->Name("BM_RecursiveMutex_LockUnlock");
BENCHMARK_TEMPLATE(BM_PthreadMutex_LockUnlock, Process::OneThread)->Name("BM_PthreadMutex_LockUnlock");

// The lock is held once for the whole loop, so each iteration is one level
// of recursion taken and given back by the owner.
void BM_VornCriticalSection_Relock(benchmark::State& state)
{
    VornCriticalSectionObject section;
    section.lock();
    for (auto _ : state) {
        section.lock();
        section.unlock();
    }
    section.unlock();
}
BENCHMARK(BM_VornCriticalSection_Relock);

void BM_RecursiveMutex_Relock(benchmark::State& state)
{
    std::recursive_mutex mutex;
    mutex.lock();
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
    mutex.unlock();
}
BENCHMARK(BM_RecursiveMutex_Relock);

BENCHMARK_TEMPLATE(BM_VornCriticalSection_LockUnlock, Process::Threaded)
    ->Name("BM_VornCriticalSection_LockUnlock_Threaded");
BENCHMARK_TEMPLATE(BM_RecursiveMutex_LockUnlock, Process::Threaded)->Name("BM_RecursiveMutex_LockUnlock_Threaded");
BENCHMARK_TEMPLATE(BM_PthreadMutex_LockUnlock, Process::Threaded)->Name("BM_PthreadMutex_LockUnlock_Threaded");

// Both threads of a run share one lock and one counter, so that the section
// guards a little real work.
VornCriticalSectionObject g_sharedSection;
std::recursive_mutex g_sharedMutex;
long g_sharedCounter = 0;

void BM_VornCriticalSection_Contended(benchmark::State& state)
{
    for (auto _ : state) {
        g_sharedSection.lock();
        benchmark::DoNotOptimize(++g_sharedCounter);
        g_sharedSection.unlock();
    }
}
BENCHMARK(BM_VornCriticalSection_Contended)->Threads(2)->UseRealTime();

void BM_RecursiveMutex_Contended(benchmark::State& state)
{
    for (auto _ : state) {
        g_sharedMutex.lock();
        benchmark::DoNotOptimize(++g_sharedCounter);
        g_sharedMutex.unlock();
    }
}
BENCHMARK(BM_RecursiveMutex_Contended)->Threads(2)->UseRealTime();

using vsupt_bench::Clock;

const vsupt_bench::RatioRegistration ratios{
    {"lock+unlock, one thread", "BM_VornCriticalSection_LockUnlock", "BM_RecursiveMutex_LockUnlock", 1.5, Clock::Cpu},
    {"lock+unlock, one thread", "BM_VornCriticalSection_LockUnlock", "BM_PthreadMutex_LockUnlock", 0, Clock::Cpu},
    {"lock+unlock, threaded", "BM_VornCriticalSection_LockUnlock_Threaded", "BM_RecursiveMutex_LockUnlock_Threaded",
     1.5, Clock::Cpu},
    {"lock+unlock, threaded", "BM_VornCriticalSection_LockUnlock_Threaded", "BM_PthreadMutex_LockUnlock_Threaded", 0,
     Clock::Cpu},
    {"re-lock+unlock", "BM_VornCriticalSection_Relock", "BM_RecursiveMutex_Relock", 0.3, Clock::Cpu},
    {"two threads contending", "BM_VornCriticalSection_Contended/real_time/threads:2",
     "BM_RecursiveMutex_Contended/real_time/threads:2", 0},
};

}  // namespace
