// The library's recursive lock against std::recursive_mutex and a bare POSIX
// mutex: lock+unlock of a free lock, re-lock+unlock by the owner, and two
// threads taking turns on one lock. A bare mutex with the thread key work of
// the list of held locks shows the least a first lock and last unlock can
// cost.
#include "BenchRatio.h"

#include <vsupt/VornCriticalSectionObject.h>

#include <pthread.h>

#include <mutex>

namespace {

using VornSupport::VornCriticalSectionObject;

void BM_VornCriticalSection_LockUnlock(benchmark::State& state)
{
    VornCriticalSectionObject section;
    section.init();  // made on first use: keep that out of the loop
    for (auto _ : state) {
        section.lock();
        section.unlock();
    }
}
BENCHMARK(BM_VornCriticalSection_LockUnlock);

void BM_RecursiveMutex_LockUnlock(benchmark::State& state)
{
    std::recursive_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(BM_RecursiveMutex_LockUnlock);

void BM_PthreadMutex_LockUnlock(benchmark::State& state)
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    for (auto _ : state) {
        pthread_mutex_lock(&mutex);
        pthread_mutex_unlock(&mutex);
    }
    pthread_mutex_destroy(&mutex);
}
BENCHMARK(BM_PthreadMutex_LockUnlock);

// What the per-thread list of held locks costs at the least: the mutex, the
// read of the list's head from the thread key on the first lock, and the
// writes of the key on the first lock and the last unlock.
void BM_PthreadMutexAndListKey_LockUnlock(benchmark::State& state)
{
    pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_key_t key;
    pthread_key_create(&key, nullptr);
    for (auto _ : state) {
        pthread_mutex_lock(&mutex);
        void* head = pthread_getspecific(key);
        benchmark::DoNotOptimize(head);
        pthread_setspecific(key, &mutex);
        pthread_setspecific(key, head);
        pthread_mutex_unlock(&mutex);
    }
    pthread_key_delete(key);
    pthread_mutex_destroy(&mutex);
}
BENCHMARK(BM_PthreadMutexAndListKey_LockUnlock);

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

const vsupt_bench::RatioRegistration ratios{
    {"lock+unlock", "BM_VornCriticalSection_LockUnlock", "BM_RecursiveMutex_LockUnlock", 1.5},
    {"lock+unlock", "BM_VornCriticalSection_LockUnlock", "BM_PthreadMutex_LockUnlock", 0},
    {"lock+unlock, the list's own floor", "BM_PthreadMutexAndListKey_LockUnlock", "BM_RecursiveMutex_LockUnlock", 0},
    {"re-lock+unlock", "BM_VornCriticalSection_Relock", "BM_RecursiveMutex_Relock", 0.3},
    {"two threads contending", "BM_VornCriticalSection_Contended/real_time/threads:2",
     "BM_RecursiveMutex_Contended/real_time/threads:2", 0},
};

}  // namespace
