#include "support/LogRecords.h"

#include <vsupt/VornReadWriteLock.h>

#include <gtest/gtest.h>

#include <memory>

using log_records::recordsAt;
using VornSupport::VornReadWriteLock;

TEST(VornReadWriteLockTest, CopiesAreOneLockForManyReadersOrOneWriterAndOutliveTheFirst)
{
    auto first = std::make_unique<VornReadWriteLock>();
    VornReadWriteLock copy(*first);
    first->readLock();
    EXPECT_FALSE(copy.tryWriteLock());
    EXPECT_TRUE(copy.tryReadLock());
    copy.readUnLock();
    first->readUnLock();
    first.reset();
    EXPECT_TRUE(copy.tryWriteLock());
    EXPECT_FALSE(copy.tryReadLock());
    copy.writeUnLock();
}

// Taking the lock again while holding it for writing is refused by the
// platform with EDEADLK, which is logged with the status 3.
TEST(VornReadWriteLockTest, AFailedLockWritesOneRecordFromLevelOne)
{
    VornReadWriteLock lock;
    lock.writeLock();
    EXPECT_TRUE(recordsAt(0, [&] { lock.writeLock(); }).empty());
    EXPECT_EQ(recordsAt(1,
                        [&] {
                            lock.readLock();
                            lock.writeLock();
                        }),
              (std::vector<std::string>{
                  "VornReadWriteLock::readLock: Acquiring Readlock exited with the following error 3",
                  "VornReadWriteLock::writeLock: Acquiring Writelock exited with the following error3"}));
    lock.writeUnLock();
}
