// The library's read-write lock against a bare pthread_rwlock_t: read
// lock+unlock and write lock+unlock of a free lock by one thread.
#include "BenchRatio.h"

#include <vsupt/VornReadWriteLock.h>

#include <pthread.h>

namespace {

using VornSupport::VornReadWriteLock;

void BM_VornReadWriteLock_ReadLockUnlock(benchmark::State& state)
{
    VornReadWriteLock lock;
    for (auto _ : state) {
        lock.readLock();
        lock.readUnLock();
    }
}
BENCHMARK(BM_VornReadWriteLock_ReadLockUnlock);

void BM_PthreadRwlock_ReadLockUnlock(benchmark::State& state)
{
    pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    for (auto _ : state) {
        pthread_rwlock_rdlock(&lock);
        pthread_rwlock_unlock(&lock);
    }
    pthread_rwlock_destroy(&lock);
}
BENCHMARK(BM_PthreadRwlock_ReadLockUnlock);

void BM_VornReadWriteLock_WriteLockUnlock(benchmark::State& state)
{
    VornReadWriteLock lock;
    for (auto _ : state) {
        lock.writeLock();
        lock.writeUnLock();
    }
}
BENCHMARK(BM_VornReadWriteLock_WriteLockUnlock);

void BM_PthreadRwlock_WriteLockUnlock(benchmark::State& state)
{
    pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;
    for (auto _ : state) {
        pthread_rwlock_wrlock(&lock);
        pthread_rwlock_unlock(&lock);
    }
    pthread_rwlock_destroy(&lock);
}
BENCHMARK(BM_PthreadRwlock_WriteLockUnlock);

const vsupt_bench::RatioRegistration ratios{
    {"read lock+unlock", "BM_VornReadWriteLock_ReadLockUnlock", "BM_PthreadRwlock_ReadLockUnlock", 1.2},
    {"write lock+unlock", "BM_VornReadWriteLock_WriteLockUnlock", "BM_PthreadRwlock_WriteLockUnlock", 1.2},
};

}  // namespace
