// The library's read-write lock against a bare pthread_rwlock_t: read
// lock+unlock and write lock+unlock of a free lock by one thread. Both cost
// mostly their two atomic instructions, some fifteen nanoseconds, so the
// ratios are of CPU time: in real time, a few milliseconds of another
// process on the same core move a ratio more than the lock does.
#include "BenchRatio.h"

#include <vsupt/VornReadWriteLock.h>

#include <pthread.h>

namespace {

using VornSupport::VornReadWriteLock;

template <void (VornReadWriteLock::*lock)(), void (VornReadWriteLock::*unlock)()>
void BM_VornReadWriteLock(benchmark::State& state)
{
    VornReadWriteLock rwlock;
    for (auto _ : state) {
        (rwlock.*lock)();
        (rwlock.*unlock)();
    }
}
BENCHMARK_TEMPLATE(BM_VornReadWriteLock, &VornReadWriteLock::readLock, &VornReadWriteLock::readUnLock)
    ->Name("BM_VornReadWriteLock_ReadLockUnlock");
BENCHMARK_TEMPLATE(BM_VornReadWriteLock, &VornReadWriteLock::writeLock, &VornReadWriteLock::writeUnLock)
    ->Name("BM_VornReadWriteLock_WriteLockUnlock");

template <int (*lock)(pthread_rwlock_t*)>
void BM_PthreadRwlock(benchmark::State& state)
{
    pthread_rwlock_t rwlock = PTHREAD_RWLOCK_INITIALIZER;
    for (auto _ : state) {
        lock(&rwlock);
        pthread_rwlock_unlock(&rwlock);
    }
    pthread_rwlock_destroy(&rwlock);
}
BENCHMARK_TEMPLATE(BM_PthreadRwlock, pthread_rwlock_rdlock)->Name("BM_PthreadRwlock_ReadLockUnlock");
BENCHMARK_TEMPLATE(BM_PthreadRwlock, pthread_rwlock_wrlock)->Name("BM_PthreadRwlock_WriteLockUnlock");

using vsupt_bench::Clock;

const vsupt_bench::RatioRegistration ratios{
    {"read lock+unlock", "BM_VornReadWriteLock_ReadLockUnlock", "BM_PthreadRwlock_ReadLockUnlock", 1.2, Clock::Cpu},
    {"write lock+unlock", "BM_VornReadWriteLock_WriteLockUnlock", "BM_PthreadRwlock_WriteLockUnlock", 1.2,
     Clock::Cpu},
};

}  // namespace
